#include "CustomConsoleLogging/Testing/LoggingFixture.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <set>

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kLogs = "/logs";
constexpr std::string_view kContainer =
    "/Library/Containers/com.Quorvane.Quorvane.QVFinderExtension/Data/Library/Application "
    "Support/Quorvane/LogDirectory";

// Pruning, on a file system whose entries have the dates that a test wants.
class QVLoggingPruning : public Tests::LoggingTest {
  protected:
    QVLoggingPruning() { files.addFolder(kLogs); }

    // Files "1" to "count" whose creation dates rise in an order that differs from the listing's.
    void addEntries(int count) {
        for (int i = 0; i < count; ++i) {
            const int date = i * 7 % count + 1;
            add(std::to_string(date), date);
        }
    }
    void add(const std::string& name, double date) {
        files.addFile(std::string(kLogs) + "/" + name, date);
    }
    void prune(std::int32_t maxItems) {
        const NS::ScopedFileManager scope(files);
        NS::make<QVLogging>()->cleanupLogsFolder_maxItems(NS::str(kLogs), maxItems);
    }
    std::set<std::string> left() const { return left(kLogs); }
    std::set<std::string> left(std::string_view folder) const {
        const std::vector<std::string> names = files.namesIn(folder);
        return {names.begin(), names.end()};
    }
    static std::set<std::string> numbers(int first, int last) {
        std::set<std::string> names;
        for (int i = first; i <= last; ++i) {
            names.insert(std::to_string(i));
        }
        return names;
    }
    std::size_t removals() {
        const std::vector<std::string> accesses = files.takeAccesses();
        return static_cast<std::size_t>(std::ranges::count_if(
            accesses, [](const std::string& access) { return access.starts_with("remove"); }));
    }

    NS::MemoryFileManager files;
};

TEST_F(QVLoggingPruning, KeepsTheEntriesOfTheLatestCreation) {
    addEntries(25);
    prune(18);
    EXPECT_EQ(left(), numbers(8, 25));
    EXPECT_EQ(removals(), 7U);
}

TEST_F(QVLoggingPruning, RemovesAllForALimitOfZero) {
    addEntries(25);
    prune(0);
    EXPECT_EQ(left(), std::set<std::string>{});
}

TEST_F(QVLoggingPruning, RemovesNoneForANegativeLimit) {
    addEntries(25);
    prune(-1);
    prune(std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(left(), numbers(1, 25));
    EXPECT_EQ(removals(), 0U);
}

TEST_F(QVLoggingPruning, RemovesNoneAtTheLimit) {
    addEntries(18);
    prune(18);
    EXPECT_EQ(left(), numbers(1, 18));
    EXPECT_EQ(removals(), 0U);
}

TEST_F(QVLoggingPruning, RemovesOneBeyondTheLimit) {
    addEntries(19);
    prune(18);
    EXPECT_EQ(left(), numbers(2, 19));
}

TEST_F(QVLoggingPruning, CountsAndRemovesEntriesOfEveryNameAndKind) {
    files.addFolder("/logs/folder", 1);
    files.addFile("/logs/folder/new", 100);
    add("PLPCR.s", 2);
    add(".hidden", 3);
    add("FELog-a.txt", 4);
    add("notes", 5);
    prune(2);
    EXPECT_EQ(left(), (std::set<std::string>{"FELog-a.txt", "notes"}));
    EXPECT_FALSE(files.holds("/logs/folder/new"));
}

TEST_F(QVLoggingPruning, KeepsTheMarkerFileAmongTheNewest) {
    addEntries(3);
    add("PLPCR.s", 4);
    prune(1);
    EXPECT_EQ(left(), std::set<std::string>{"PLPCR.s"});
}

TEST_F(QVLoggingPruning, KeepsTheFirstListedOfEntriesOfOneDate) {
    add("older", 1);
    add("b", 2);
    add("a", 2);
    add("c", 2);
    prune(2);
    EXPECT_EQ(left(), (std::set<std::string>{"a", "b"}));
}

TEST_F(QVLoggingPruning, ReadsOneLevelAndEachEntryOnceInTheOrderOfTheListing) {
    files.addFolder("/logs/b", 1);
    files.addFile("/logs/b/deep", 2);
    add("a", 3);
    prune(18);
    EXPECT_EQ(files.takeAccesses(),
              (std::vector<std::string>{"list /logs", "attributes /logs/b", "attributes /logs/a"}));
}

TEST_F(QVLoggingPruning, IsLeftByAnEntryWithoutACreationDate) {
    addEntries(25);
    files.hideAttributesOf("/logs/7");
    try {
        prune(18);
        ADD_FAILURE() << "the pass went on";
    } catch (const NS::Exception& exception) {
        EXPECT_EQ(exception.name()->utf8(), NS::kInvalidArgumentException);
    }
    EXPECT_EQ(left(), numbers(1, 25));
}

TEST_F(QVLoggingPruning, IsLeftByAnEntryWithoutACreationDateAlsoWithinTheLimit) {
    addEntries(2);
    files.hideAttributesOf("/logs/1");
    EXPECT_THROW(prune(18), NS::Exception);
}

TEST_F(QVLoggingPruning, GoesOnAfterAnEntryThatCannotBeRemoved) {
    addEntries(5);
    files.refuse("/logs/2");
    prune(2);
    EXPECT_EQ(left(), (std::set<std::string>{"2", "4", "5"}));
}

TEST_F(QVLoggingPruning, DoesNothingWithoutAFolder) {
    const NS::ScopedFileManager scope(files);
    const auto logging = NS::make<QVLogging>();
    logging->cleanupLogsFolder_maxItems(NS::str("/absent"), 0);
    logging->cleanupLogsFolder_maxItems(nullptr, 0);
    EXPECT_EQ(files.takeAccesses(), std::vector<std::string>{"list /absent"});
}

TEST_F(QVLoggingPruning, DoesNothingInAFileInPlaceOfAFolder) {
    files.addFile("/logs/file", 1);
    const NS::ScopedFileManager scope(files);
    NS::make<QVLogging>()->cleanupLogsFolder_maxItems(NS::str("/logs/file"), 0);
    EXPECT_TRUE(files.holds("/logs/file"));
}

// cleanup(): both folders, each with its own limit.
class QVLoggingCleanup : public QVLoggingPruning {
  protected:
    QVLoggingCleanup() { QVLogging::setupWithPrefix(NS::str("FE")); }

    void fill(const std::string& folder) {
        const NS::ScopedFileManager scope(files);
        (void)files.createDirectoryAtPath(*NS::str(folder));
        for (int i = 1; i <= 25; ++i) {
            files.addFile(folder + "/" + std::to_string(i), i);
        }
        files.takeAccesses();
    }
    std::string container() const { return folders.home().string() + std::string(kContainer); }
    void cleanup() {
        const NS::ScopedFileManager scope(files);
        QVLogging::sharedInstance()->cleanup();
    }
};

TEST_F(QVLoggingCleanup, KeepsEighteenEntriesOfTheLoggingFolder) {
    fill(logFolder());
    cleanup();
    EXPECT_EQ(left(logFolder().string()), numbers(8, 25));
}

TEST_F(QVLoggingCleanup, KeepsTwoEntriesOfTheContainersLoggingFolder) {
    fill(container());
    cleanup();
    EXPECT_EQ(left(container()), numbers(24, 25));
}

TEST_F(QVLoggingCleanup, LooksAtTheLoggingFolderFirst) {
    cleanup();
    EXPECT_EQ(files.takeAccesses(),
              (std::vector<std::string>{"list " + logFolder().string(), "list " + container()}));
}

TEST_F(QVLoggingCleanup, LooksAtTheContainerAloneWithoutALoggingFolder) {
    QVLogging::sharedInstance()->setPath(nullptr);
    cleanup();
    EXPECT_EQ(files.takeAccesses(), std::vector<std::string>{"list " + container()});
}

TEST_F(QVLoggingCleanup, IsLeftByAnEntryWithoutACreationDate) {
    fill(logFolder());
    fill(container());
    files.hideAttributesOf(logFolder().string() + "/3");
    EXPECT_THROW(cleanup(), NS::Exception);
    EXPECT_EQ(left(container()), numbers(1, 25));
}

TEST_F(QVLoggingCleanup, LeavesRoomForThisRunsFile) {
    fs::create_directories(logFolder());
    for (int i = 0; i < 25; ++i) {
        std::ofstream(logFolder() / std::to_string(i)) << "old";
    }
    QVLogging::sharedInstance()->cleanup();
    EXPECT_EQ(logFiles().size(), 18U);
    _Log("DEBUG ", nullptr, 0, nullptr, "first");
    EXPECT_EQ(logFiles().size(), 19U);
}

TEST_F(QVLoggingCleanup, RemovesFoldersButNothingBehindALink) {
    fs::create_directories(logFolder() / "folder" / "deep");
    fs::create_directory(folders.root() / "kept");
    std::ofstream(folders.root() / "kept" / "file") << "kept";
    fs::create_directory_symlink(folders.root() / "kept", logFolder() / "link");
    QVLogging::sharedInstance()->cleanupLogsFolder_maxItems(QVLogging::sharedInstance()->path(), 0);
    EXPECT_EQ(logFiles(), std::vector<std::string>{});
    EXPECT_EQ(Tests::contentsOf(folders.root() / "kept" / "file"), "kept");
}

} // namespace
