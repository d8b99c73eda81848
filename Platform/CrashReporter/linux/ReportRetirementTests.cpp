#include "Platform/CrashReporter/linux/ReportRetirement.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>

namespace fs = std::filesystem;

namespace {

using Names = std::set<std::string>;

class ReportRetirement : public Tests::FolderTest {
  protected:
    ReportRetirement() { fs::create_directory(reports); }

    // A report that was last written so many hours ago; its text is its age.
    void put(const fs::path& file, int hours) const {
        std::ofstream(file) << hours;
        fs::last_write_time(file, now - std::chrono::hours(hours));
    }
    std::string retire() const { return NS::retireReports(reports.string(), "Peer"); }
    static Names namesIn(const fs::path& folder) {
        Names names;
        for (const auto& entry : fs::directory_iterator(folder)) {
            names.insert(entry.path().filename());
        }
        return names;
    }
    // 25 reports, the oldest first: "Peer_00.crash" and on.
    void fillRetired() const {
        fs::create_directory(retired);
        for (int i = 0; i < 25; ++i) {
            put(retired / ("Peer_" + std::to_string(i / 10) + std::to_string(i % 10) + ".crash"),
                100 - i);
        }
    }

    fs::path reports = folders.root() / "reports";
    fs::path retired = reports / "Retired";
    fs::file_time_type now = fs::file_time_type::clock::now();
};

TEST_F(ReportRetirement, MovesAllButTheNewestByModification) {
    put(reports / "Peer_c.crash", 3);
    put(reports / "Peer_a.crash", 1);
    put(reports / "Peer_b.crash", 2);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(reports), (Names{"Peer_a.crash", "Retired"}));
    EXPECT_EQ(namesIn(retired), (Names{"Peer_b.crash", "Peer_c.crash"}));
}

TEST_F(ReportRetirement, MakesNoFolderForNothing) {
    put(reports / "Peer_a.crash", 1);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(reports), Names{"Peer_a.crash"});
}

TEST_F(ReportRetirement, LeavesTheReportsOfOthersAndOtherKindsAlone) {
    const Names others = {"Other_x.crash", "PeerTwo_x.crash", "Peer_x.hang", "Peer.crash", "x"};
    for (const std::string& name : others) {
        put(reports / name, 9);
    }
    fs::create_directory(reports / "Peer_folder.crash");
    fs::create_symlink(reports / "x", reports / "Peer_link.crash");
    put(reports / "Peer_a.crash", 1);
    put(reports / "Peer_b.crash", 2);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(retired), Names{"Peer_b.crash"});
    EXPECT_EQ(namesIn(reports).size(), others.size() + 4);
}

TEST_F(ReportRetirement, GivesAnotherNameWhereTheOldIsTaken) {
    fs::create_directory(retired);
    put(retired / "Peer_b.crash", 5);
    put(retired / "Peer_b-2.crash", 4);
    put(reports / "Peer_a.crash", 1);
    put(reports / "Peer_b.crash", 2);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(retired), (Names{"Peer_b.crash", "Peer_b-2.crash", "Peer_b-3.crash"}));
    EXPECT_EQ(Tests::contentsOf(retired / "Peer_b.crash"), "5");
    EXPECT_EQ(Tests::contentsOf(retired / "Peer_b-3.crash"), "2");
}

TEST_F(ReportRetirement, KeepsTheTwentyFiveNewest) {
    fillRetired();
    put(reports / "Peer_a.crash", 1);
    put(reports / "Peer_b.crash", 2);
    put(reports / "Peer_c.crash", 3);
    EXPECT_EQ(retire(), "");
    const Names left = namesIn(retired);
    EXPECT_EQ(left.size(), NS::kRetiredReports);
    EXPECT_FALSE(left.contains("Peer_00.crash") || left.contains("Peer_01.crash"));
    EXPECT_TRUE(left.contains("Peer_02.crash") && left.contains("Peer_b.crash"));
}

TEST_F(ReportRetirement, TakesAwayOnlyReportsOfTheProcess) {
    fillRetired();
    put(retired / "Other_old.crash", 500);
    put(reports / "Peer_a.crash", 1);
    put(reports / "Peer_b.crash", 2);
    EXPECT_EQ(retire(), "");
    EXPECT_TRUE(fs::exists(retired / "Other_old.crash"));
}

TEST_F(ReportRetirement, DoesNotFollowALinkInPlaceOfItsFolders) {
    fs::create_directory(folders.root() / "elsewhere");
    fs::create_directory_symlink(folders.root() / "elsewhere", retired);
    put(reports / "Peer_a.crash", 1);
    put(reports / "Peer_b.crash", 2);
    EXPECT_EQ(retire().substr(0, 9), "Retired: ");
    EXPECT_TRUE(fs::is_empty(folders.root() / "elsewhere"));
    EXPECT_TRUE(fs::exists(reports / "Peer_b.crash"));
}

TEST_F(ReportRetirement, SaysWhatTheSystemRefused) {
    EXPECT_EQ(NS::retireReports("/nonexistent/reports", "Peer"),
              "/nonexistent/reports: No such file or directory");
    put(retired, 1);
    put(reports / "Peer_a.crash", 1);
    put(reports / "Peer_b.crash", 2);
    EXPECT_EQ(retire(), "Retired: Not a directory");
}

TEST_F(ReportRetirement, MayBeDoneByTwoAtOnce) {
    for (int i = 0; i < 200; ++i) {
        put(reports / ("Peer_" + std::to_string(i) + ".crash"), i + 1);
    }
    std::string first;
    std::thread other([&] { first = retire(); });
    const std::string second = retire();
    other.join();
    EXPECT_EQ(first + second, "");
    EXPECT_EQ(namesIn(reports), (Names{"Peer_0.crash", "Retired"}));
    EXPECT_EQ(namesIn(retired).size(), NS::kRetiredReports);
}

} // namespace
