#include "Shell/Client/Testing/ClientFixture.h"

#include <chrono>

namespace {

using namespace std::chrono_literals;
using Shell::Outcome;
using Lifetime = Shell::FinderClient::Lifetime;
using Calls = std::vector<std::string>;

// The folders that windows show, as the extension hears of them.
class ShownFolders : public Tests::ClientTest {
  protected:
    // What the extension has heard, once it has answered.
    Calls heard() {
        EXPECT_EQ(client->settle(kLong), Outcome::kDone);
        return extension->calls();
    }
};

TEST_F(ShownFolders, AreToldWhenTheyBeginAndEnd) {
    start();
    EXPECT_EQ(client->beginObserving("/mnt/Drive/a b/"), Outcome::kDone);
    EXPECT_EQ(client->endObserving("/mnt/Drive/a b/"), Outcome::kDone);
    EXPECT_EQ(heard(), (Calls{"BeginObserving file:///mnt/Drive/a%20b true",
                              "EndObserving file:///mnt/Drive/a%20b"}));
}

TEST_F(ShownFolders, AreToldOnceHoweverManyWindowsShowThem) {
    start();
    EXPECT_EQ(client->beginObserving("/mnt/Drive"), Outcome::kDone);
    EXPECT_EQ(client->beginObserving("/mnt/Drive"), Outcome::kDone);
    EXPECT_EQ(client->endObserving("/mnt/Drive"), Outcome::kDone);
    EXPECT_EQ(heard(), Calls{"BeginObserving file:///mnt/Drive true"});
    EXPECT_EQ(client->endObserving("/mnt/Drive"), Outcome::kDone);
    EXPECT_EQ(heard().size(), 2U);
}

TEST_F(ShownFolders, MayOutliveTheClient) {
    start();
    EXPECT_EQ(client->beginObserving("/mnt/Drive", Lifetime::kUntilEnded), Outcome::kDone);
    EXPECT_EQ(client->endObserving("/mnt/Drive"), Outcome::kDone);
    EXPECT_EQ(heard(),
              (Calls{"BeginObserving file:///mnt/Drive false", "EndObserving file:///mnt/Drive"}));
}

TEST_F(ShownFolders, AreNotToldElsewhere) {
    start();
    for (const char* const folder : {"/home", "/mnt/Drive2", "a", ""}) {
        EXPECT_EQ(client->beginObserving(folder), Outcome::kNotOffered) << folder;
        EXPECT_EQ(client->endObserving(folder), Outcome::kNotOffered) << folder;
        EXPECT_EQ(client->beginObserving(folder, Lifetime::kUntilEnded), Outcome::kNotOffered);
        EXPECT_EQ(client->endObserving(folder), Outcome::kNotOffered) << folder;
    }
    EXPECT_EQ(heard(), Calls());
}

TEST_F(ShownFolders, AreToldAnExtensionThatComesLater) {
    connect();
    EXPECT_EQ(client->beginObserving("/mnt/Drive/a"), Outcome::kAbsent);
    EXPECT_EQ(client->beginObserving("/home"), Outcome::kAbsent);
    EXPECT_EQ(client->beginObserving("/mnt/Drive/b", Lifetime::kUntilEnded), Outcome::kAbsent);
    extension.emplace(Calls{kDrive});
    extension->appear();
    EXPECT_TRUE(pump([&] { return client->isPresent(); }));
    EXPECT_EQ(heard(), Calls{"BeginObserving file:///mnt/Drive/a true"});
}

TEST_F(ShownFolders, AreToldAnExtensionThatIsStartedAgain) {
    start();
    EXPECT_EQ(client->beginObserving("/mnt/Drive/a"), Outcome::kDone);
    EXPECT_EQ(client->settle(kLong), Outcome::kDone);
    extension.reset();
    EXPECT_TRUE(pump([&] { return !client->isPresent(); }));
    EXPECT_EQ(client->endObserving("/mnt/Drive/b"), Outcome::kAbsent);
    extension.emplace(Calls{kDrive});
    extension->appear();
    EXPECT_TRUE(pump([&] { return client->isPresent(); }));
    EXPECT_EQ(heard(), Calls{"BeginObserving file:///mnt/Drive/a true"});
}

TEST_F(ShownFolders, AreNotToldAgainWhenTheyEndedMeanwhile) {
    connect();
    EXPECT_EQ(client->beginObserving("/mnt/Drive"), Outcome::kAbsent);
    EXPECT_EQ(client->endObserving("/mnt/Drive"), Outcome::kAbsent);
    extension.emplace(Calls{kDrive});
    extension->appear();
    EXPECT_TRUE(pump([&] { return client->isPresent(); }));
    EXPECT_EQ(heard(), Calls());
}

TEST_F(ShownFolders, FollowTheWatchedFolders) {
    start();
    EXPECT_EQ(client->beginObserving("/mnt/Drive/a"), Outcome::kDone);
    EXPECT_EQ(client->beginObserving("/mnt/Other/b"), Outcome::kNotOffered);
    extension->setWatchedFolders({"file:///mnt/Other"});
    EXPECT_TRUE(pump([&] { return client->watchedFolders() == Calls{"/mnt/Other"}; }));
    EXPECT_EQ(heard(),
              (Calls{"BeginObserving file:///mnt/Drive/a true", "EndObserving file:///mnt/Drive/a",
                     "BeginObserving file:///mnt/Other/b true"}));
    EXPECT_EQ(client->endObserving("/mnt/Drive/a"), Outcome::kNotOffered);
}

TEST_F(ShownFolders, AreNotToldAnewAtEachChange) {
    start();
    EXPECT_EQ(client->beginObserving("/mnt/Drive/a"), Outcome::kDone);
    extension->changeGeneration();
    extension->changeToolTip("Another tip");
    EXPECT_TRUE(pump([&] { return client->toolbarItem().toolTip == "Another tip"; }));
    EXPECT_EQ(heard(), Calls{"BeginObserving file:///mnt/Drive/a true"});
}

TEST_F(ShownFolders, AreSettledWithTheErrorOfTheExtension) {
    start();
    extension->refuseWith("org.freedesktop.DBus.Error.LimitsExceeded", "too many");
    EXPECT_EQ(client->beginObserving("/mnt/Drive"), Outcome::kDone);
    EXPECT_EQ(client->settle(kLong), Outcome::kFailed);
    EXPECT_EQ(client->settle(kLong), Outcome::kDone);
}

TEST_F(ShownFolders, AreNotWaitedFor) {
    start();
    extension->keepCalls();
    EXPECT_EQ(client->beginObserving("/mnt/Drive"), Outcome::kDone);
    EXPECT_EQ(client->settle(0ms), Outcome::kTimedOut);
    extension->answerKept();
    EXPECT_EQ(client->settle(kLong), Outcome::kDone);
}

TEST_F(ShownFolders, AreToldNoMoreToAnExtensionThatHearsNothing) {
    start();
    extension->keepCalls();
    int told = 0;
    while (told < 10'000 && client->endObserving("/mnt/Drive") == Outcome::kDone) {
        ++told;
    }
    EXPECT_EQ(told, 4096);
    EXPECT_EQ(client->endObserving("/mnt/Drive"), Outcome::kTimedOut);
    extension->answerKept();
    EXPECT_TRUE(pump([&] { return client->endObserving("/mnt/Drive") == Outcome::kDone; }));
}

} // namespace
