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
#include <sys/fsuid.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Names = std::set<std::string>;

// The superuser may write everywhere. To the file system this thread is somebody else then.
class WithoutPrivileges {
  public:
    WithoutPrivileges() noexcept : earlier_(::setfsuid(::geteuid() == 0 ? kNobody : ::geteuid())) {}
    ~WithoutPrivileges() { (void)::setfsuid(static_cast<uid_t>(earlier_)); }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;

    int earlier_;
};

class ReportRetirement : public Tests::FolderTest {
  protected:
    ReportRetirement() { fs::create_directory(reports); }

    static std::string named(const std::string& host) {
        return "Peer_2026-11-21-140311_" + host + ".crash";
    }
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
    // 25 reports, the oldest first: named("00") and on.
    void fillRetired(int count = 25) const {
        fs::create_directory(retired);
        for (int i = 0; i < count; ++i) {
            put(retired / named(std::to_string(i / 10) + std::to_string(i % 10)), 100 - i);
        }
    }

    fs::path reports = folders.root() / "reports";
    fs::path retired = reports / "Retired";
    fs::file_time_type now = fs::file_time_type::clock::now();
};

TEST_F(ReportRetirement, MovesAllButTheNewestByModification) {
    put(reports / named("c"), 3);
    put(reports / named("a"), 1);
    put(reports / named("b"), 2);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(reports), (Names{named("a"), "Retired"}));
    EXPECT_EQ(namesIn(retired), (Names{named("b"), named("c")}));
}

TEST_F(ReportRetirement, MakesNoFolderForNothing) {
    put(reports / named("a"), 1);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(reports), Names{named("a")});
}

TEST_F(ReportRetirement, LeavesTheReportsOfOthersAndOtherKindsAlone) {
    const Names others = {"Other_2026-11-21-140311_x.crash", "PeerTwo_2026-11-21-140311_x.crash",
                          "Peer_2026-11-21-140311_x.hang", "Peer.crash", "x"};
    for (const std::string& name : others) {
        put(reports / name, 9);
    }
    fs::create_directory(reports / named("folder"));
    fs::create_symlink(reports / "x", reports / named("link"));
    put(reports / named("a"), 1);
    put(reports / named("b"), 2);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(retired), Names{named("b")});
    EXPECT_EQ(namesIn(reports).size(), others.size() + 4);
}

TEST_F(ReportRetirement, TellsAProcessFromOneWhoseNameIsLonger) {
    fillRetired();
    Names others;
    for (const char* const rest :
         {"Helper_2026-11-21-140311_a", "Helper_h", "2026-11-21-1403_a", "2026-11-21-140311-a",
          "2026-11-21-140311", "2026-11-2x-140311_a", "x2026-11-21-140311_a", ""}) {
        others.insert(std::string("Peer_") + rest + ".crash");
    }
    for (const std::string& name : others) {
        put(reports / name, 9);
        put(retired / name, 500);
    }
    EXPECT_EQ(retire(), "");
    for (const std::string& name : others) {
        EXPECT_TRUE(fs::exists(reports / name) && fs::exists(retired / name)) << name;
    }
}

TEST_F(ReportRetirement, GivesAnotherNameWhereTheOldIsTaken) {
    fs::create_directory(retired);
    put(retired / named("b"), 5);
    put(retired / named("b-2"), 4);
    put(reports / named("a"), 1);
    put(reports / named("b"), 2);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(retired), (Names{named("b"), named("b-2"), named("b-3")}));
    EXPECT_EQ(Tests::contentsOf(retired / named("b")), "5");
    EXPECT_EQ(Tests::contentsOf(retired / named("b-3")), "2");
}

TEST_F(ReportRetirement, KeepsTheTwentyFiveNewest) {
    fillRetired();
    put(reports / named("a"), 1);
    put(reports / named("b"), 2);
    put(reports / named("c"), 3);
    EXPECT_EQ(retire(), "");
    const Names left = namesIn(retired);
    EXPECT_EQ(left.size(), NS::kRetiredReports);
    EXPECT_FALSE(left.contains(named("00")) || left.contains(named("01")));
    EXPECT_TRUE(left.contains(named("02")) && left.contains(named("b")));
}

TEST_F(ReportRetirement, KeepsNoMoreWhereNothingMoves) {
    fillRetired(28);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(retired).size(), NS::kRetiredReports);
    put(retired / named("old"), 500);
    put(reports / named("a"), 1);
    EXPECT_EQ(retire(), "");
    EXPECT_EQ(namesIn(retired).size(), NS::kRetiredReports);
    EXPECT_FALSE(fs::exists(retired / named("old")));
}

TEST_F(ReportRetirement, TakesAwayOnlyReportsOfTheProcess) {
    fillRetired();
    put(retired / "Other_2026-11-21-140311_old.crash", 500);
    put(reports / named("a"), 1);
    put(reports / named("b"), 2);
    EXPECT_EQ(retire(), "");
    EXPECT_TRUE(fs::exists(retired / "Other_2026-11-21-140311_old.crash"));
}

TEST_F(ReportRetirement, DoesNotFollowALinkInPlaceOfItsFolders) {
    fs::create_directory(folders.root() / "elsewhere");
    fs::create_directory_symlink(folders.root() / "elsewhere", retired);
    put(reports / named("a"), 1);
    put(reports / named("b"), 2);
    EXPECT_EQ(retire().substr(0, 9), "Retired: ");
    EXPECT_TRUE(fs::is_empty(folders.root() / "elsewhere"));
    EXPECT_TRUE(fs::exists(reports / named("b")));
}

TEST_F(ReportRetirement, SaysWhatTheSystemRefused) {
    EXPECT_EQ(NS::retireReports("/nonexistent/reports", "Peer"),
              "/nonexistent/reports: No such file or directory");
    put(retired, 1);
    put(reports / named("a"), 1);
    put(reports / named("b"), 2);
    EXPECT_EQ(retire(), "Retired: Not a directory");
}

TEST_F(ReportRetirement, DoesNotFollowALinkToTheReports) {
    fs::create_directory(folders.root() / "elsewhere");
    fs::remove(reports);
    fs::create_directory_symlink(folders.root() / "elsewhere", reports);
    EXPECT_EQ(retire(), reports.string() + ": Not a directory");
    fs::remove(reports);
    put(reports, 1);
    EXPECT_EQ(retire(), reports.string() + ": Not a directory");
}

TEST_F(ReportRetirement, SaysThatNoReportCouldBeWritten) {
    fs::permissions(folders.root(), fs::perms(0755));
    fs::permissions(reports, fs::perms(0555));
    const WithoutPrivileges thread;
    EXPECT_EQ(retire(), reports.string() + ": Permission denied");
}

TEST_F(ReportRetirement, MayBeDoneByTwoAtOnce) {
    for (int i = 0; i < 200; ++i) {
        put(reports / named(std::to_string(i)), i + 1);
    }
    std::string first;
    std::thread other([&] { first = retire(); });
    const std::string second = retire();
    other.join();
    EXPECT_EQ(first + second, "");
    EXPECT_EQ(namesIn(reports), (Names{named("0"), "Retired"}));
    EXPECT_EQ(namesIn(retired).size(), NS::kRetiredReports);
}

} // namespace
