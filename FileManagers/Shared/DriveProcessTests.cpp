#include "FileManagers/Shared/Drive.h"

#include "FileManagers/Shared/Testing/DriveFixture.h"

#include <chrono>
#include <csignal>

namespace {

using namespace std::chrono_literals;
using Shell::MenuKind;
using Titles = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

// A plug-in's drive and an extension in another process, which watches "/mnt/drive".
class DriveProcess : public Tests::DriveTest {
  protected:
    void startService() {
        service.emplace(SERVICE_PROGRAM, Titles(), folders.root() / "service.out",
                        folders.root() / "service.err");
        connect("/mnt/drive");
    }
    void SetUp() override {
        times = {};
        startService();
    }
    void stop() {
        ASSERT_TRUE(service->waitForState('S'));
        service->signal(SIGSTOP);
        ASSERT_TRUE(service->waitForState('T'));
    }
    std::size_t count(const std::string& name) {
        return titles(MenuKind::kItems, {{"/mnt/drive/" + name}, ""}).size();
    }
    // Whether there are so many in the end: under load an answer can be late, and is asked for
    // anew.
    bool has(const std::string& name, std::size_t entries) {
        return pump([&] { return count(name) == entries; });
    }
    void pick() { drive->pick(MenuKind::kItems, {"First", "first", true}, {{"/mnt/drive/a"}, ""}); }

    std::optional<Tests::Process> service;
};

TEST_F(DriveProcess, WaitsOnceForAnExtensionThatIsStopped) {
    stop();
    const auto before = Clock::now();
    EXPECT_EQ(count("0"), 0U);
    const auto first = Clock::now();
    EXPECT_GE(first - before, 20ms); // at the least, however long it was waited for just before
    for (int i = 1; i <= 1'000; ++i) {
        EXPECT_EQ(count(std::to_string(i)), 0U);
    }
    // One more wait in each of them would be 200 seconds.
    EXPECT_LT(Clock::now() - first, 20s);
    EXPECT_EQ(changes, 0);
}

TEST_F(DriveProcess, HasItsEntriesAgainWhenTheExtensionGoesOn) {
    stop();
    EXPECT_EQ(count("a"), 0U);
    service->signal(SIGCONT);
    EXPECT_TRUE(pump([&] { return changes == 1; }));
    EXPECT_TRUE(has("a", 4));
}

TEST_F(DriveProcess, KeepsTheEntriesThatItHasOfOneThatIsStopped) {
    EXPECT_TRUE(has("a", 4));
    stop();
    EXPECT_EQ(count("b"), 0U);
    EXPECT_EQ(count("a"), 4U);
}

TEST_F(DriveProcess, TellsWhatAStoppedExtensionDidNotDoAndDoesNotDoLater) {
    stop();
    pick();
    const auto after = Clock::now();
    for (int i = 0; i < 100; ++i) {
        pick();
    }
    EXPECT_LT(Clock::now() - after, 15s);
    ASSERT_EQ(told.size(), 101U);
    EXPECT_EQ(told.front(),
              "“First” could not be carried out: Sample Drive does not answer. Nothing was done, "
              "and nothing will be done later.");
    EXPECT_EQ(told.back(), told.front());
    service->signal(SIGCONT);
    EXPECT_TRUE(pump([&] { return changes == 1; }));
    EXPECT_EQ(service->output(), ""); // to carry out an entry is to make its menu first
}

TEST_F(DriveProcess, LosesItsEntriesWithTheExtensionAndHasThemAgainWithTheNext) {
    EXPECT_TRUE(has("a", 4));
    service->signal(SIGKILL);
    EXPECT_TRUE(has("a", 0));
    EXPECT_GE(changes, 1);
    startService();
    EXPECT_TRUE(has("a", 4));
}

} // namespace
