#include "Platform/Foundation/FileManager.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fcntl.h>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <sys/time.h>

namespace {

namespace fs = std::filesystem;

class FileManager : public Tests::FolderTest {
  protected:
    fs::path at(const std::string& name) const { return folders.root() / name; }
    NS::Ref<NS::String> text(const std::string& name) const {
        return NS::String::fromFileSystemRepresentation(at(name).string());
    }
    void put(const std::string& name, std::string_view contents = "") const {
        std::ofstream(at(name), std::ios::binary) << contents;
    }
    static mode_t modeOf(const fs::path& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
    std::set<std::string> namesIn(const std::string& folder) {
        std::set<std::string> names;
        const auto listed = files.contentsOfDirectoryAtPath(*text(folder));
        for (const auto& name : *listed) {
            names.insert(NS::cast<NS::String>(name)->fileSystemRepresentation());
        }
        return names;
    }

    NS::FileManager& files = NS::FileManager::defaultManager();
};

TEST_F(FileManager, ListsTheNamesOfOneLevelHiddenOnesIncluded) {
    fs::create_directories(at("folder/sub/deep"));
    put("folder/.hidden");
    put("folder/a b");
    EXPECT_EQ(namesIn("folder"), (std::set<std::string>{".hidden", "a b", "sub"}));
}

TEST_F(FileManager, ListsInTheOrderOfTheFileSystem) {
    fs::create_directory(at("folder"));
    std::vector<std::string> expected;
    for (int i = 0; i < 40; ++i) {
        put("folder/" + std::to_string(i * 7919));
    }
    for (const auto& entry : fs::directory_iterator(at("folder"))) {
        expected.push_back(entry.path().filename());
    }
    std::vector<std::string> listed;
    const auto names = files.contentsOfDirectoryAtPath(*text("folder"));
    for (const auto& name : *names) {
        listed.push_back(name->description()->utf8());
    }
    EXPECT_EQ(listed, expected);
}

TEST_F(FileManager, KeepsANameThatIsNotUtf8) {
    fs::create_directory(at("folder"));
    put("folder/caf\xE9 \xF0\x9F");
    EXPECT_EQ(namesIn("folder"), std::set<std::string>{"caf\xE9 \xF0\x9F"});
    EXPECT_TRUE(files.removeItemAtPath(*text("folder/caf\xE9 \xF0\x9F")));
    EXPECT_TRUE(fs::is_empty(at("folder")));
}

TEST_F(FileManager, ListsNothingWhereThereIsNoFolder) {
    put("file");
    EXPECT_FALSE(files.contentsOfDirectoryAtPath(*text("absent")));
    EXPECT_FALSE(files.contentsOfDirectoryAtPath(*text("file")));
    EXPECT_FALSE(files.contentsOfDirectoryAtPath(*NS::str("")));
}

TEST_F(FileManager, TellsSizeAndKind) {
    using Kind = NS::FileAttributes::Kind;
    put("file", "12345");
    fs::create_directory(at("folder"));
    fs::create_symlink("file", at("link"));
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    EXPECT_EQ(files.attributesOfItemAtPath(*text("file"))->size, 5U);
    EXPECT_EQ(files.attributesOfItemAtPath(*text("file"))->kind, Kind::kRegular);
    EXPECT_EQ(files.attributesOfItemAtPath(*text("folder"))->kind, Kind::kDirectory);
    EXPECT_EQ(files.attributesOfItemAtPath(*text("link"))->kind, Kind::kSymbolicLink);
    EXPECT_EQ(files.attributesOfItemAtPath(*text("pipe"))->kind, Kind::kOther);
}

TEST_F(FileManager, TellsTheModificationDate) {
    put("file");
    const timeval times[] = {
        {1794812187, 0     },
        {1794812187, 410000}
    };
    ASSERT_EQ(::utimes(at("file").c_str(), times), 0);
    const auto attributes = files.attributesOfItemAtPath(*text("file"));
    EXPECT_NEAR(attributes->modificationDate->timeIntervalSince1970(), 1794812187.41, 1e-6);
}

TEST_F(FileManager, TellsTheCreationDateWhateverTheModificationDateIs) {
    const double before = NS::Date::date()->timeIntervalSinceReferenceDate();
    put("file");
    const timeval future[] = {
        {4102444800, 0},
        {4102444800, 0}
    };
    ASSERT_EQ(::utimes(at("file").c_str(), future), 0);
    const auto created = files.attributesOfItemAtPath(*text("file"))->creationDate;
    // The kernel stamps files by a clock that lags by some milliseconds.
    EXPECT_NEAR(created->timeIntervalSinceReferenceDate(), before, 30.0);
}

// The process file system keeps no birth times.
TEST_F(FileManager, TakesAnotherDateWhereNoCreationDateIsKept) {
    const auto attributes = files.attributesOfItemAtPath(*NS::str("/proc/self/stat"));
    EXPECT_TRUE(attributes->creationDate->isEqual(attributes->modificationDate.get()));
}

TEST_F(FileManager, TellsOfALinkThatLeadsNowhere) {
    fs::create_symlink("absent", at("link"));
    EXPECT_TRUE(files.attributesOfItemAtPath(*text("link"))->creationDate);
    EXPECT_FALSE(files.fileExistsAtPath(*text("link")));
}

TEST_F(FileManager, TellsNothingOfAnAbsentEntry) {
    EXPECT_FALSE(files.attributesOfItemAtPath(*text("absent")));
    EXPECT_FALSE(files.fileExistsAtPath(*text("absent")));
}

TEST_F(FileManager, KnowsWhatExists) {
    put("file");
    EXPECT_TRUE(files.fileExistsAtPath(*text("file")));
    EXPECT_TRUE(files.fileExistsAtPath(*text("")));
}

TEST_F(FileManager, MakesAFolderWithThoseAboveItForTheUserAlone) {
    ASSERT_TRUE(files.createDirectoryAtPath(*text("a/b/c/")));
    EXPECT_EQ(modeOf(at("a")), 0700U);
    EXPECT_EQ(modeOf(at("a/b/c")), 0700U);
    EXPECT_TRUE(files.createDirectoryAtPath(*text("a/b/c")));
}

TEST_F(FileManager, MakesNoFolderBelowAFile) {
    put("file", "kept");
    EXPECT_FALSE(files.createDirectoryAtPath(*text("file")));
    EXPECT_FALSE(files.createDirectoryAtPath(*text("file/folder")));
    EXPECT_EQ(Tests::contentsOf(at("file")), "kept");
}

TEST_F(FileManager, PutsAFileInThePlaceOfAnother) {
    put("file", "a longer content than the next");
    ASSERT_TRUE(files.createFileAtPath_contents(*text("file"), NS::bytesOf("new")));
    EXPECT_EQ(Tests::contentsOf(at("file")), "new");
    EXPECT_EQ(modeOf(at("file")), 0600U);
}

TEST_F(FileManager, LeavesAReaderOfTheOldFileItsContent) {
    put("file", "old");
    std::ifstream reader(at("file"));
    ASSERT_TRUE(files.createFileAtPath_contents(*text("file"), NS::bytesOf("new")));
    std::string seen;
    reader >> seen;
    EXPECT_EQ(seen, "old");
}

TEST_F(FileManager, MakesAFileWithTheLongestName) {
    const std::string name(255, 'n');
    EXPECT_TRUE(files.createFileAtPath_contents(*text(name), {}));
    EXPECT_TRUE(fs::exists(at(name)));
}

TEST_F(FileManager, LeavesNothingBehindWhenAFileCannotBeMade) {
    fs::create_directories(at("folder/taken"));
    EXPECT_FALSE(files.createFileAtPath_contents(*text("folder/taken"), NS::bytesOf("x")));
    EXPECT_FALSE(files.createFileAtPath_contents(*text("absent/file"), NS::bytesOf("x")));
    EXPECT_EQ(namesIn("folder"), std::set<std::string>{"taken"});
    EXPECT_FALSE(fs::exists(at("absent")));
}

TEST_F(FileManager, ReadsAWholeFile) {
    const std::string contents(100000, '\0');
    put("file", contents);
    EXPECT_EQ(NS::charactersOf(files.contentsAtPath(*text("file"))->bytes()), contents);
}

TEST_F(FileManager, ReadsNothingThatIsNoRegularFile) {
    fs::create_directory(at("folder"));
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files.contentsAtPath(*text("folder")));
    EXPECT_FALSE(files.contentsAtPath(*text("pipe")));
    EXPECT_FALSE(files.contentsAtPath(*text("absent")));
    EXPECT_FALSE(files.contentsAtPath(*NS::str("/dev/zero")));
}

TEST_F(FileManager, ReadsNothingBeyondItsLimit) {
    put("file");
    fs::resize_file(at("file"), NS::FileManager::kLongestContents + 1);
    EXPECT_FALSE(files.contentsAtPath(*text("file")));
}

TEST_F(FileManager, RemovesAFolderWithAllThatIsInIt) {
    fs::create_directories(at("folder/sub/deep"));
    put("folder/sub/deep/file");
    EXPECT_TRUE(files.removeItemAtPath(*text("folder")));
    EXPECT_FALSE(fs::exists(at("folder")));
}

TEST_F(FileManager, RemovesALinkAndLeavesWhatItPointsTo) {
    fs::create_directories(at("kept/sub"));
    put("kept/file");
    fs::create_directory_symlink(at("kept"), at("link"));
    fs::create_directory(at("folder"));
    fs::create_directory_symlink(at("kept"), at("folder/link"));
    EXPECT_TRUE(files.removeItemAtPath(*text("link/")));
    EXPECT_TRUE(files.removeItemAtPath(*text("folder")));
    EXPECT_FALSE(fs::is_symlink(at("link")));
    EXPECT_EQ(namesIn("kept"), (std::set<std::string>{"file", "sub"}));
}

TEST_F(FileManager, RemovesATreeDeeperThanPathsCanBe) {
    int folder = ::open(folders.root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string name(200, 'd');
    for (int depth = 0; depth < 100; ++depth) {
        ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
        const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    ::close(folder);
    EXPECT_TRUE(files.removeItemAtPath(*text(name)));
    EXPECT_FALSE(fs::exists(at(name)));
}

TEST_F(FileManager, RemovesNothingThatIsNotThere) {
    EXPECT_FALSE(files.removeItemAtPath(*text("absent")));
    EXPECT_FALSE(files.removeItemAtPath(*NS::str("")));
}

// A path cut off at its NUL would name another entry.
TEST_F(FileManager, TakesNoPathWithANul) {
    put("file", "kept");
    const auto path = text(std::string("file\0tail", 9));
    EXPECT_FALSE(files.fileExistsAtPath(*path));
    EXPECT_FALSE(files.attributesOfItemAtPath(*path));
    EXPECT_FALSE(files.contentsAtPath(*path));
    EXPECT_FALSE(files.contentsOfDirectoryAtPath(*path));
    EXPECT_FALSE(files.createDirectoryAtPath(*path));
    EXPECT_FALSE(files.createFileAtPath_contents(*path, {}));
    EXPECT_FALSE(files.removeItemAtPath(*path));
    EXPECT_FALSE(NS::FileHandle::fileHandleForWritingAtPath(*path));
    EXPECT_EQ(Tests::contentsOf(at("file")), "kept");
}

TEST_F(FileManager, TakesPathsOfEveryLength) {
    for (const std::size_t length : {1U, 100U, 180U, 200U, 250U}) {
        const std::string name(length, 'p');
        EXPECT_TRUE(files.createDirectoryAtPath(*text(name + "/" + name))) << length;
        EXPECT_TRUE(files.fileExistsAtPath(*text(name + "/" + name))) << length;
    }
    EXPECT_FALSE(files.createDirectoryAtPath(*text(std::string(256, 'p'))));
}

} // namespace
