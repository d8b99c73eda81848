#include "Platform/Foundation/FileHandle.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <fstream>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

class FileHandle : public Tests::FolderTest {
  protected:
    FileHandle() { std::ofstream(file) << "first\n"; }

    std::optional<NS::FileHandle> open() const { return open(file); }
    static std::optional<NS::FileHandle> open(const fs::path& path) {
        return NS::FileHandle::fileHandleForWritingAtPath(
            *NS::String::fromFileSystemRepresentation(path.string()));
    }
    static std::ptrdiff_t openDescriptors() {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    }

    fs::path file = folders.root() / "file";
};

TEST_F(FileHandle, AppendsBehindTheEnd) {
    auto handle = open();
    ASSERT_TRUE(handle);
    EXPECT_TRUE(handle->seekToEndOfFile());
    EXPECT_TRUE(handle->writeData(NS::bytesOf("second\n")));
    EXPECT_EQ(Tests::contentsOf(file), "first\nsecond\n");
}

TEST_F(FileHandle, WritesAtTheStartWithoutEmptyingTheFile) {
    EXPECT_TRUE(open()->writeData(NS::bytesOf("FI")));
    EXPECT_EQ(Tests::contentsOf(file), "FIrst\n");
}

TEST_F(FileHandle, NeverCreatesAFile) {
    EXPECT_FALSE(open(folders.root() / "absent"));
    EXPECT_FALSE(fs::exists(folders.root() / "absent"));
}

TEST_F(FileHandle, OpensNoFolder) {
    EXPECT_FALSE(open(folders.root()));
}

TEST_F(FileHandle, DoesNotWaitForTheReaderOfAPipe) {
    const fs::path pipe = folders.root() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(open(pipe));
}

TEST_F(FileHandle, TellsOfAFullDevice) {
    auto handle = open("/dev/full");
    ASSERT_TRUE(handle);
    EXPECT_FALSE(handle->writeData(NS::bytesOf("lost")));
}

TEST_F(FileHandle, AnswersFalseOnceItIsClosed) {
    auto handle = open();
    handle->closeFile();
    handle->closeFile();
    EXPECT_FALSE(handle->seekToEndOfFile());
    EXPECT_FALSE(handle->writeData(NS::bytesOf("lost")));
    EXPECT_EQ(Tests::contentsOf(file), "first\n");
}

TEST_F(FileHandle, ClosesTheFileWhenItGoes) {
    const std::ptrdiff_t before = openDescriptors();
    for (int i = 0; i < 50; ++i) {
        auto first = open();
        NS::FileHandle second = std::move(*first);
        first = open();
        *first = std::move(second);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FileHandle, BelongsToTheFileManagerThatOpenedIt) {
    NS::MemoryFileManager memory;
    memory.addFile("/file", 0, "in memory");
    std::optional<NS::FileHandle> handle;
    {
        const NS::ScopedFileManager scope(memory);
        handle = open("/file");
    }
    ASSERT_TRUE(handle);
    EXPECT_TRUE(handle->seekToEndOfFile());
    EXPECT_TRUE(handle->writeData(NS::bytesOf(" still")));
    handle.reset();
    EXPECT_EQ(memory.textOf("/file"), "in memory still");
    EXPECT_EQ(memory.takeAccesses(),
              (std::vector<std::string>{"open /file", "seek", "write 6", "close"}));
}

} // namespace
