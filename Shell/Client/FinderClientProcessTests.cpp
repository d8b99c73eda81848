#include "Shell/Client/Testing/ClientFixture.h"

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Shell::MenuKind;
using Shell::Outcome;
using Clock = std::chrono::steady_clock;

// A client and the service of a sample extension in another process, which watches "/mnt/drive".
class FinderClientProcess : public Tests::ClientTest {
  protected:
    void startService() {
        service.emplace(SERVICE_PROGRAM, std::vector<std::string>(), folders.root() / "service.out",
                        folders.root() / "service.err");
    }
    void SetUp() override {
        client.emplace();
        startService();
        ASSERT_TRUE(pump([&] { return client->isPresent(); }));
    }
    Outcome menu(std::chrono::milliseconds timeout) {
        return client->menu(MenuKind::kItems, item, timeout).outcome;
    }

    const Shell::Place item{{"/mnt/drive/a"}, ""};
    std::optional<Tests::Process> service;
};

TEST_F(FinderClientProcess, AsksAndCarriesOut) {
    const auto answer = client->menu(MenuKind::kItems, item, kLong);
    ASSERT_TRUE(answer.menu);
    EXPECT_EQ(answer.menu->title, "Sample");
    EXPECT_EQ(answer.menu->entries.size(), 4U);
    EXPECT_EQ(client->run(MenuKind::kItems, "first", item, kLong), Outcome::kDone);
    EXPECT_EQ(client->run(MenuKind::kItems, "off", item, kLong), Outcome::kNotInMenu);
    EXPECT_EQ(client->watchedFolders(), std::vector<std::string>{"/mnt/drive"});
    EXPECT_EQ(client->toolbarItem().imageFile, "/icons/Sample Image.svg");
}

TEST_F(FinderClientProcess, GivesUpInTimeOnOneThatIsStopped) {
    stop(*service);
    const auto before = Clock::now();
    EXPECT_EQ(menu(60ms), Outcome::kTimedOut);
    EXPECT_GE(Clock::now() - before, 60ms);
    EXPECT_EQ(client->run(MenuKind::kItems, "first", item, 60ms), Outcome::kTimedOut);
    EXPECT_LT(Clock::now() - before, 30s);
    EXPECT_EQ(client->beginObserving("/mnt/drive"), Outcome::kDone);
    EXPECT_TRUE(client->isPresent());
    EXPECT_EQ(client->menu(MenuKind::kItems, {{"/home/a"}, ""}, kLong).outcome,
              Outcome::kNotOffered);
    service->signal(SIGCONT);
    EXPECT_EQ(menu(kLong), Outcome::kDone);
}

TEST_F(FinderClientProcess, HasNothingDoneLaterThatWasToldAsNotDone) {
    stop(*service);
    EXPECT_EQ(client->run(MenuKind::kItems, "first", item, 0ms), Outcome::kTimedOut);
    service->signal(SIGCONT);
    // Calls are taken up in their order, and to carry out an entry makes the menu.
    EXPECT_EQ(menu(kLong), Outcome::kDone);
    EXPECT_EQ(service->output(), "menu\n");
    EXPECT_EQ(client->run(MenuKind::kItems, "first", item, kLong), Outcome::kDone);
    EXPECT_EQ(service->output(), "menu\nmenu\n");
}

TEST_F(FinderClientProcess, TellsWhenOneThatWasStoppedAnswersAgain) {
    EXPECT_TRUE(client->isAnswering());
    stop(*service);
    EXPECT_EQ(menu(0ms), Outcome::kTimedOut);
    EXPECT_EQ(menu(0ms), Outcome::kTimedOut);
    EXPECT_FALSE(client->isAnswering());
    bool isTold = false;
    client->setOnChange([&] { isTold = client->isAnswering(); });
    client->serve();
    EXPECT_FALSE(isTold);
    service->signal(SIGCONT);
    EXPECT_TRUE(pump([&] { return isTold; }));
}

TEST_F(FinderClientProcess, TakesOneThatIsStartedAgainForAnswering) {
    stop(*service);
    EXPECT_EQ(menu(0ms), Outcome::kTimedOut);
    const std::string before = client->owner();
    service->signal(SIGKILL);
    EXPECT_TRUE(pump([&] { return client->owner().empty(); }));
    EXPECT_TRUE(client->isAnswering());
    startService();
    EXPECT_TRUE(pump([&] { return client->isPresent(); }));
    EXPECT_NE(client->owner(), before);
}

TEST_F(FinderClientProcess, IsAbsentWhileOneThatIsStoppedStarts) {
    stop(*service);
    client.emplace();
    EXPECT_FALSE(client->waitUntilKnown(50ms));
    EXPECT_EQ(menu(kLong), Outcome::kAbsent);
    service->signal(SIGCONT);
    EXPECT_TRUE(client->waitUntilKnown(kLong));
    EXPECT_TRUE(client->isPresent());
}

TEST_F(FinderClientProcess, ReturnsWithOneThatIsStartedAgain) {
    service->signal(SIGKILL);
    EXPECT_TRUE(pump([&] { return !client->isPresent(); }));
    EXPECT_EQ(menu(kLong), Outcome::kAbsent);
    startService();
    EXPECT_TRUE(pump([&] { return client->isPresent(); }));
    EXPECT_EQ(menu(kLong), Outcome::kDone);
}

TEST_F(FinderClientProcess, SeesOneThatIsKilledWhileItIsAsked) {
    stop(*service);
    std::thread killer([this] { service->signal(SIGKILL); });
    EXPECT_EQ(menu(kLong), Outcome::kAbsent);
    killer.join();
}

} // namespace
