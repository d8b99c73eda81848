#include "Platform/Foundation/FileAppender.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class FileAppender : public Tests::FolderTest {
  protected:
    static bool append(const fs::path& path, std::string_view text) {
        return NS::FileManager::defaultManager()
            .appenderForPath(*NS::String::fromFileSystemRepresentation(path.string()))
            ->append(NS::bytesOf(text));
    }
    static std::ptrdiff_t openDescriptors() {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    }

    fs::path file = folders.root() / "file";
};

TEST_F(FileAppender, WritesBehindTheEnd) {
    std::ofstream(file) << "first\n";
    EXPECT_TRUE(append(file, "second\n"));
    EXPECT_TRUE(append(file, ""));
    EXPECT_EQ(Tests::contentsOf(file), "first\nsecond\n");
}

TEST_F(FileAppender, FollowsItsPath) {
    const auto appender = NS::FileManager::defaultManager().appenderForPath(
        *NS::String::fromFileSystemRepresentation(file.string()));
    EXPECT_FALSE(appender->append(NS::bytesOf("too early")));
    std::ofstream(file) << "one\n";
    EXPECT_TRUE(appender->append(NS::bytesOf("two\n")));
    fs::rename(file, folders.root() / "moved");
    EXPECT_FALSE(appender->append(NS::bytesOf("too late")));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(Tests::contentsOf(folders.root() / "moved"), "one\ntwo\n");
}

TEST_F(FileAppender, GoesWithItsFolderAndComesBackToItsPath) {
    const fs::path folder = folders.root() / "folder";
    const fs::path moved = folders.root() / "moved";
    fs::create_directory(folder);
    std::ofstream(folder / "file") << "1";
    const auto appender = NS::FileManager::defaultManager().appenderForPath(
        *NS::String::fromFileSystemRepresentation((folder / "file").string()));
    EXPECT_TRUE(appender->append(NS::bytesOf("2")));
    fs::rename(folder, moved);
    EXPECT_TRUE(appender->append(NS::bytesOf("3")));
    EXPECT_EQ(Tests::contentsOf(moved / "file"), "123");
    fs::remove_all(moved);
    EXPECT_FALSE(appender->append(NS::bytesOf("lost")));
    fs::create_directory(folder);
    EXPECT_FALSE(appender->append(NS::bytesOf("lost")));
    std::ofstream(folder / "file") << "4";
    EXPECT_TRUE(appender->append(NS::bytesOf("5")));
    EXPECT_TRUE(appender->append(NS::bytesOf("6")));
    EXPECT_EQ(Tests::contentsOf(folder / "file"), "456");
}

TEST_F(FileAppender, TakesAPathWithoutAFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(folders.root());
    std::ofstream("file") << "1";
    EXPECT_TRUE(append("file", "2"));
    EXPECT_FALSE(append("absent", "lost"));
    fs::current_path(before);
    EXPECT_EQ(Tests::contentsOf(file), "12");
}

TEST_F(FileAppender, WritesNothingIntoWhatHasNoEnd) {
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(append(file, "nobody reads"));
    const int reader = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_FALSE(append(file, "lost"));
    char byte = 0;
    EXPECT_LE(::read(reader, &byte, 1), 0);
    ::close(reader);
}

TEST_F(FileAppender, TellsOfAFullDevice) {
    EXPECT_FALSE(append("/dev/full", "lost"));
}

TEST_F(FileAppender, TakesNoPathWithANul) {
    std::ofstream(file) << "kept";
    EXPECT_FALSE(append(file.string() + std::string("\0tail", 5), "lost"));
    EXPECT_EQ(Tests::contentsOf(file), "kept");
}

TEST_F(FileAppender, LeavesNothingOpen) {
    std::ofstream(file) << "";
    const std::ptrdiff_t before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(append(file, "x"));
        EXPECT_FALSE(append("/dev/full", "x"));
    }
    EXPECT_EQ(openDescriptors(), before);
}

// What a file manager does that has no way of its own.
TEST_F(FileAppender, IsAHandleForEachPieceElsewhere) {
    NS::MemoryFileManager memory;
    memory.addFile("/file", 0, "in memory");
    NS::FileManager& files = memory;
    EXPECT_TRUE(files.appenderForPath(*NS::str("/file"))->append(NS::bytesOf(" still")));
    EXPECT_FALSE(files.appenderForPath(*NS::str("/absent"))->append(NS::bytesOf("lost")));
    EXPECT_EQ(memory.textOf("/file"), "in memory still");
    EXPECT_EQ(memory.takeAccesses(),
              (std::vector<std::string>{"open /file", "seek", "write 6", "close", "open /absent"}));
}

} // namespace
