#include "Platform/CrashReporter/linux/CrashReportFile.h"

#include "Tests/Support/PrivateFolders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class CrashReportFile : public Tests::FolderTest {
  protected:
    CrashReportFile() { fs::create_directory(reports); }

    // Makes the next report; false when the system refuses.
    bool create(const std::string& host = "host") {
        NS::CrashReportFile file;
        (void)file.prepare(reports.string(), "Peer", host);
        return createIn(file);
    }
    static bool createIn(NS::CrashReportFile& file) {
        const int descriptor = file.create({2026, 3, 9, 7, 5, 1});
        return descriptor >= 0 && ::close(descriptor) == 0;
    }
    std::set<std::string> names() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(reports)) {
            names.insert(entry.path().filename());
        }
        return names;
    }

    fs::path reports = folders.root() / "reports";
};

using Names = std::set<std::string>;

TEST_F(CrashReportFile, IsNamedByProcessTimeAndHost) {
    EXPECT_TRUE(create());
    EXPECT_EQ(names(), Names{"Peer_2026-03-09-070501_host.crash"});
}

TEST_F(CrashReportFile, TakesAnotherNameWhenTheFirstIsTaken) {
    EXPECT_TRUE(create() && create() && create());
    EXPECT_EQ(names(),
              (Names{"Peer_2026-03-09-070501_host.crash", "Peer_2026-03-09-070501_host-2.crash",
                     "Peer_2026-03-09-070501_host-3.crash"}));
}

TEST_F(CrashReportFile, IsNotMadeAfterAHundredOfOneName) {
    for (int i = 0; i < 99; ++i) {
        ASSERT_TRUE(create());
    }
    EXPECT_FALSE(create());
}

TEST_F(CrashReportFile, MakesAFileNameOfAnyHost) {
    EXPECT_TRUE(create("../a b/\xC3\xA9"));
    EXPECT_TRUE(create(""));
    EXPECT_TRUE(create(std::string(300, 'h')));
    EXPECT_EQ(names(), (Names{"Peer_2026-03-09-070501_..-a-b---.crash",
                              "Peer_2026-03-09-070501_localhost.crash",
                              "Peer_2026-03-09-070501_" + std::string(64, 'h') + ".crash"}));
}

TEST_F(CrashReportFile, DoesNotFollowALinkOfItsName) {
    fs::create_symlink(folders.root() / "target", reports / "Peer_2026-03-09-070501_host.crash");
    EXPECT_TRUE(create());
    EXPECT_FALSE(fs::exists(folders.root() / "target"));
    EXPECT_TRUE(names().contains("Peer_2026-03-09-070501_host-2.crash"));
}

TEST_F(CrashReportFile, FollowsItsFolderWhenThatIsMoved) {
    NS::CrashReportFile file;
    ASSERT_TRUE(file.prepare(reports.string(), "Peer", "host"));
    fs::rename(reports, folders.root() / "moved");
    fs::create_directory(reports);
    EXPECT_TRUE(createIn(file));
    EXPECT_TRUE(fs::exists(folders.root() / "moved" / "Peer_2026-03-09-070501_host.crash"));
}

TEST_F(CrashReportFile, MakesItsFolderForTheUserAlone) {
    fs::remove(reports);
    reports /= "a/b";
    EXPECT_TRUE(create());
    EXPECT_EQ(fs::status(reports).permissions(), fs::perms::owner_all);
}

TEST_F(CrashReportFile, RefusesAFolderThatIsALink) {
    fs::rename(reports, folders.root() / "target");
    fs::create_directory_symlink(folders.root() / "target", reports);
    EXPECT_FALSE(create());
    EXPECT_TRUE(fs::is_empty(folders.root() / "target"));
}

TEST_F(CrashReportFile, CanBeTakenAway) {
    NS::CrashReportFile file;
    ASSERT_TRUE(file.prepare(reports.string(), "Peer", "host"));
    ASSERT_TRUE(createIn(file));
    file.remove();
    EXPECT_TRUE(fs::is_empty(reports));
}

} // namespace
