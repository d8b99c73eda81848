#include "Shell/Client/FinderClient.h"

#include "Shell/Client/Testing/ClientFixture.h"

#include <algorithm>
#include <chrono>
#include <csignal>

namespace {

using namespace std::chrono_literals;
using Shell::MenuKind;
using Shell::Outcome;

// What a client knows of the extension, and how it stays so.
class FinderClient : public Tests::ClientTest {
  protected:
    void countChanges() {
        client->setOnChange([this] { ++changes; });
        client->serve();
        changes = 0;
    }

    int changes = 0;
};

class WithoutABus : public Tests::FolderTest {};

TEST_F(WithoutABus, TheClientIsAbsentAndSaysWhy) {
    Shell::FinderClient client;
    EXPECT_EQ(client.descriptor(), -1);
    EXPECT_TRUE(client.waitUntilKnown(0ms));
    EXPECT_FALSE(client.isPresent());
    EXPECT_EQ(client.error(), "the session bus cannot be reached: No such file or directory");
    EXPECT_EQ(client.menu(MenuKind::kToolbar, {}).outcome, Outcome::kAbsent);
    EXPECT_EQ(client.run(MenuKind::kToolbar, "a", {}), Outcome::kAbsent);
    EXPECT_EQ(client.beginObserving("/mnt/Drive"), Outcome::kAbsent);
    EXPECT_EQ(client.endObserving("/mnt/Drive"), Outcome::kAbsent);
    client.serve();
}

TEST_F(FinderClient, IsAbsentWithoutAnExtension) {
    connect();
    EXPECT_FALSE(client->isPresent());
    EXPECT_EQ(client->generation(), 0U);
    EXPECT_TRUE(client->watchedFolders().empty());
    EXPECT_EQ(client->error(), "");
    EXPECT_EQ(client->menu(MenuKind::kToolbar, {}).outcome, Outcome::kAbsent);
}

TEST_F(FinderClient, KnowsWhatTheExtensionSays) {
    start();
    EXPECT_EQ(client->watchedFolders(), std::vector<std::string>{"/mnt/Drive"});
    EXPECT_NE(client->generation(), 0U);
    EXPECT_EQ(client->toolbarItem().name, "Fake Drive");
    EXPECT_EQ(client->toolbarItem().toolTip, "Fake tip");
    EXPECT_EQ(client->toolbarItem().imageName, "FakeImage");
    EXPECT_EQ(client->toolbarItem().imageFile, "/icons/Fake Image.svg");
}

TEST_F(FinderClient, KnowsWhetherTheHostAnswers) {
    start();
    EXPECT_TRUE(client->hostAnswers());
    countChanges();
    extension->changeHostAnswers(false);
    EXPECT_TRUE(pump([&] { return !client->hostAnswers(); }));
    EXPECT_EQ(changes, 1);
    extension->changeHostAnswers(true);
    EXPECT_TRUE(pump([&] { return client->hostAnswers(); }));
}

TEST_F(FinderClient, LeavesOutFoldersThatAreNoFileURLs) {
    extension.emplace(std::vector<std::string>{"/mnt/a", "file:///mnt/b%", "file:///mnt/c%20d/"});
    extension->appear();
    connect();
    EXPECT_EQ(client->watchedFolders(), std::vector<std::string>{"/mnt/c d"});
}

TEST_F(FinderClient, LearnsOfAnExtensionThatComesLater) {
    connect();
    countChanges();
    extension.emplace(std::vector<std::string>{kDrive});
    extension->appear();
    EXPECT_TRUE(pump([&] { return client->isPresent(); }));
    EXPECT_GE(changes, 1);
}

TEST_F(FinderClient, LearnsThatTheExtensionHasGone) {
    start();
    countChanges();
    extension.reset();
    EXPECT_TRUE(pump([&] { return !client->isPresent(); }));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(client->generation(), 0U);
    EXPECT_TRUE(client->watchedFolders().empty());
    EXPECT_EQ(client->toolbarItem().name, "");
}

TEST_F(FinderClient, LearnsThatTheNameHasGone) {
    start();
    extension->disappear();
    EXPECT_TRUE(pump([&] { return !client->isPresent(); }));
}

TEST_F(FinderClient, CountsItsGenerationOnWhenTheExtensionIsStartedAgain) {
    start();
    const auto before = client->generation();
    extension.emplace(std::vector<std::string>{kDrive});
    extension->appear();
    EXPECT_TRUE(pump([&] { return client->isPresent() && client->generation() > before; }));
}

TEST_F(FinderClient, FollowsTheWatchedFolders) {
    start();
    countChanges();
    const auto before = client->generation();
    extension->setWatchedFolders({"file:///mnt/Other", "file:///mnt/Third"});
    EXPECT_TRUE(pump([&] { return changes == 1; }));
    EXPECT_EQ(client->watchedFolders(), (std::vector<std::string>{"/mnt/Other", "/mnt/Third"}));
    EXPECT_NE(client->generation(), before);
    EXPECT_FALSE(client->watchedFolder("/mnt/Drive"));
}

TEST_F(FinderClient, FollowsTheGenerationAndTheToolTip) {
    start();
    countChanges();
    const auto before = client->generation();
    extension->changeGeneration();
    EXPECT_TRUE(pump([&] { return client->generation() != before; }));
    extension->changeToolTip("Another tip");
    EXPECT_TRUE(pump([&] { return client->toolbarItem().toolTip == "Another tip"; }));
    EXPECT_EQ(changes, 2);
}

TEST_F(FinderClient, BelievesNobodyElse) {
    start();
    Tests::FakeExtension other({"file:///"});
    other.setWatchedFolders({"file:///etc"});
    extension->changeToolTip("Told later");
    EXPECT_TRUE(pump([&] { return client->toolbarItem().toolTip == "Told later"; }));
    EXPECT_EQ(client->watchedFolders(), std::vector<std::string>{"/mnt/Drive"});
}

TEST_F(FinderClient, IsAbsentWhileTheExtensionStarts) {
    extension.emplace(std::vector<std::string>{kDrive});
    extension->keepCalls();
    extension->appear();
    client.emplace();
    EXPECT_FALSE(client->waitUntilKnown(100ms));
    EXPECT_FALSE(client->isPresent());
    EXPECT_EQ(client->menu(MenuKind::kToolbar, {}, kLong).outcome, Outcome::kAbsent);
    EXPECT_EQ(client->run(MenuKind::kToolbar, "doIt:", {}, kLong), Outcome::kAbsent);
    extension->changeToolTip("Too early to be of use");
    client->serve();
    EXPECT_EQ(client->toolbarItem().toolTip, "");
    extension->answerKept();
    EXPECT_TRUE(client->waitUntilKnown(kLong));
    EXPECT_TRUE(client->isPresent());
    EXPECT_TRUE(extension->calls().empty());
}

TEST_F(FinderClient, IsAbsentWhenWhatHasTheNameIsNoExtension) {
    extension.emplace(std::vector<std::string>{kDrive});
    extension->refuseWith("org.freedesktop.DBus.Error.UnknownInterface", "none of mine");
    extension->appear();
    connect();
    EXPECT_FALSE(client->isPresent());
}

TEST_F(FinderClient, TellsWhatAQuestionLearnedOnTheNextTurn) {
    start();
    countChanges();
    EXPECT_FALSE(isReadable());
    extension->changeGeneration();
    EXPECT_EQ(client->menu(MenuKind::kToolbar, {}, kLong).outcome, Outcome::kDone);
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(isReadable());
    client->serve();
    EXPECT_EQ(changes, 1);
    client->serve();
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(isReadable());
}

TEST_F(FinderClient, PlacesWhatIsAskedByWhatHasComeBefore) {
    start();
    extension->setWatchedFolders({"file:///mnt/Other"});
    ASSERT_TRUE(Tests::waitUntil([&] { return isReadable(); }));
    EXPECT_EQ(client->menu(MenuKind::kItems, {{"/mnt/Other/a"}, ""}, kLong).outcome,
              Outcome::kDone);
    EXPECT_EQ(client->menu(MenuKind::kItems, {{"/mnt/Drive/a"}, ""}, kLong).outcome,
              Outcome::kNotOffered);
}

TEST_F(FinderClient, CanBeAskedWhileItTellsAChange) {
    start();
    std::vector<Outcome> outcomes;
    client->setOnChange([&] {
        client->setOnChange(nullptr);
        outcomes.push_back(client->menu(MenuKind::kToolbar, {}, kLong).outcome);
    });
    extension->changeGeneration();
    EXPECT_TRUE(pump([&] { return !outcomes.empty(); }));
    EXPECT_EQ(outcomes.front(), Outcome::kDone);
}

TEST_F(FinderClient, IsNotToldOfAChangeWhileItIsToldOfOne) {
    start();
    int depth = 0;
    int turns = 0;
    client->setOnChange([&] {
        EXPECT_EQ(++depth, 1);
        const auto before = client->generation();
        if (++turns == 1) {
            extension->changeGeneration();
            EXPECT_TRUE(pump([&] { return client->generation() != before; }));
        }
        --depth;
    });
    extension->changeGeneration();
    EXPECT_TRUE(pump([&] { return turns == 2; }));
}

TEST_F(FinderClient, TakesTurnsWithAMenuThatChangesWhatItShows) {
    start();
    int turns = 0;
    client->setOnChange([&] {
        ++turns;
        extension->changeGeneration();
        EXPECT_EQ(client->menu(MenuKind::kToolbar, {}, kLong).outcome, Outcome::kDone);
    });
    extension->changeGeneration();
    EXPECT_TRUE(pump([&] { return turns > 0; }));
    turns = 0;
    client->serve();
    EXPECT_EQ(turns, 1);
    client->setOnChange(nullptr);
}

TEST_F(FinderClient, LeavesTheLoopItsTurnsInAFloodOfChanges) {
    start();
    constexpr std::uint64_t kFlood = 2000;
    const auto begin = client->generation();
    extension->changeGeneration(kFlood);
    std::uint64_t most = 0;
    EXPECT_TRUE(pump([&] {
        const auto before = client->generation();
        client->serve();
        most = std::max(most, client->generation() - before);
        return client->generation() == begin + kFlood;
    }));
    EXPECT_LE(most, 64U);
}

TEST_F(FinderClient, KeepsItsTimeoutInAFloodOfChanges) {
    start();
    const auto begin = client->generation();
    extension->keepCalls();
    extension->changeGeneration(2000);
    EXPECT_EQ(client->menu(MenuKind::kToolbar, {}, 0ms).outcome, Outcome::kTimedOut);
    EXPECT_LE(client->generation() - begin, 100U);
}

TEST_F(FinderClient, LearnsThatTheBusHasGone) {
    start();
    countChanges();
    const int descriptor = client->descriptor();
    bus.daemon().signal(SIGKILL);
    EXPECT_TRUE(pump([&] { return !client->isPresent(); }));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(client->descriptor(), descriptor);
    EXPECT_FALSE(isReadable());
    EXPECT_TRUE(client->watchedFolders().empty());
    EXPECT_TRUE(client->error().starts_with("the session bus cannot be reached"))
        << client->error();
    EXPECT_EQ(client->menu(MenuKind::kToolbar, {}).outcome, Outcome::kAbsent);
    EXPECT_TRUE(client->waitUntilKnown(0ms));
}

TEST_F(FinderClient, DoesNotWaitForABusThatIsStopped) {
    stop(bus.daemon());
    const auto before = std::chrono::steady_clock::now();
    client.emplace();
    EXPECT_FALSE(client->waitUntilKnown(100ms));
    EXPECT_GE(std::chrono::steady_clock::now() - before, 100ms);
    EXPECT_EQ(client->menu(MenuKind::kToolbar, {}, kLong).outcome, Outcome::kAbsent);
    client->serve();
    client.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 30s);
    bus.daemon().signal(SIGCONT);
}

TEST_F(FinderClient, ConnectsWhenTheBusGoesOn) {
    stop(bus.daemon());
    client.emplace();
    EXPECT_FALSE(client->waitUntilKnown(0ms));
    bus.daemon().signal(SIGCONT);
    extension.emplace(std::vector<std::string>{kDrive});
    extension->appear();
    EXPECT_TRUE(pump([&] { return client->isPresent(); }));
}

TEST_F(FinderClient, PlacesFoldersWithoutAsking) {
    start();
    stop(bus.daemon());
    EXPECT_EQ(client->watchedFolder("/mnt/Drive/a/../b/"), "/mnt/Drive/b");
    EXPECT_EQ(client->watchedFolder("/mnt/Drive"), "/mnt/Drive");
    EXPECT_EQ(client->watchedFolder("/mnt/Drive2"), std::nullopt);
    EXPECT_EQ(client->watchedFolder("a"), std::nullopt);
    EXPECT_TRUE(client->isOffered(MenuKind::kItems, {{"/mnt/Drive/a"}, ""}));
    EXPECT_FALSE(client->isOffered(MenuKind::kItems, {{"/mnt/a"}, ""}));
    EXPECT_EQ(client->menu(MenuKind::kItems, {{"/mnt/a"}, ""}, kLong).outcome,
              Outcome::kNotOffered);
    bus.daemon().signal(SIGCONT);
    extension.reset();
}

TEST_F(FinderClient, OffersNothingWithoutAnExtension) {
    connect();
    EXPECT_FALSE(client->isOffered(MenuKind::kToolbar, {}));
}

} // namespace
