#include "Tests/EndToEnd/ExtensionProcess.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <fstream>

namespace fs = std::filesystem;

namespace {

class HostProcess : public Tests::ProcessTest {
  protected:
    Tests::Process startHost(std::vector<std::string> options = {},
                             const std::string& name = "host") {
        options.insert(options.begin(), {"--drive", drive.string()});
        return {HOST_PROGRAM, options, folders.root() / (name + ".out"),
                folders.root() / (name + ".err")};
    }
    static bool journalShows(const Tests::Process& host, const std::string& text) {
        return Tests::waitUntil([&] { return host.output().find(text) != std::string::npos; });
    }
};

TEST_F(HostProcess, BringsAnExtensionUpAndEndsItWithItself) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(logShows("initial init at"));
    ASSERT_TRUE(logShows("received info <QVUserInfoItem: 0x"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.waitForExit(), 0);
    EXPECT_EQ(extension.waitForExit(), 0);
    EXPECT_EQ(registeredEntries(), 0U);
}

TEST_F(HostProcess, EndsWithStatus0AlsoByInterrupt) {
    auto host = startHost();
    ASSERT_TRUE(Tests::waitUntil([&] { return registeredEntries() > 0; }));
    host.signal(SIGINT);
    EXPECT_EQ(host.waitForExit(), 0);
}

TEST_F(HostProcess, WritesALineOfJsonForEachRequest) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(journalShows(host, "ext_req_userinfo"));
    std::istringstream lines(host.output());
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    const auto first = nlohmann::json::parse(line);
    EXPECT_EQ(first["action"], "ext_alive");
    EXPECT_EQ(first["payload"].dump(), "[]");
    EXPECT_TRUE(first["client"].get<std::string>().starts_with("<NSMachPort: 0x"));
    ASSERT_TRUE(std::getline(lines, line));
    const auto second = nlohmann::json::parse(line);
    EXPECT_EQ(second["action"], "ext_req_userinfo");
    EXPECT_EQ(second["client"], first["client"]);
}

TEST_F(HostProcess, WritesItsJournalIntoAFile) {
    const fs::path journal = folders.root() / "journal";
    auto host = startHost({"--journal", journal.string()});
    auto extension = startExtension();
    EXPECT_TRUE(Tests::waitUntil(
        [&] { return Tests::contentsOf(journal).find("ext_req_userinfo") != std::string::npos; }));
    EXPECT_EQ(host.output(), "");
}

TEST_F(HostProcess, RefusesToRunBesideAnother) {
    auto host = startHost();
    ASSERT_TRUE(Tests::waitUntil([&] { return registeredEntries() == 2; }));
    auto second = startHost({}, "second");
    EXPECT_EQ(second.waitForExit(), 1);
    EXPECT_NE(second.errors().find("another host application is running"), std::string::npos);
    EXPECT_TRUE(host.isRunning());
}

TEST_F(HostProcess, TakesOverTheNameOfAHostThatWasKilled) {
    {
        auto killed = startHost({}, "killed");
        ASSERT_TRUE(Tests::waitUntil([&] { return registeredEntries() == 2; }));
        killed.signal(SIGKILL);
        ASSERT_EQ(killed.waitForExit(), 128 + SIGKILL);
    }
    auto host = startHost();
    auto extension = startExtension();
    EXPECT_TRUE(journalShows(host, "ext_req_userinfo"));
}

TEST_F(HostProcess, RefusesADriveThatIsNoFolder) {
    std::ofstream(folders.root() / "file") << "x";
    drive = folders.root() / "file";
    auto host = startHost();
    EXPECT_EQ(host.waitForExit(), 1);
    EXPECT_NE(host.errors().find("is not a folder that can be read"), std::string::npos);
}

TEST_F(HostProcess, TellsItsVersion) {
    auto host = startHost({"--version"});
    EXPECT_EQ(host.waitForExit(), 0);
    EXPECT_EQ(host.output(), "quorvane-host " QUORVANE_VERSION "\n");
}

} // namespace
