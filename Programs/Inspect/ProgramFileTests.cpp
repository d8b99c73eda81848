#include "Programs/Inspect/ProgramFile.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <fstream>
#include <sys/inotify.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

class ProgramFile : public Tests::FolderTest {
  protected:
    std::string path() const { return folders.root() / "program"; }

    void watch() const { (void)::inotify_add_watch(watcher.get(), path().c_str(), IN_OPEN); }
    // Whether somebody opened what is watched since this was asked last.
    bool wasOpened() const {
        alignas(inotify_event) std::array<char, 4096> events;
        return ::read(watcher.get(), events.data(), events.size()) > 0;
    }

    NS::FileDescriptor watcher{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
};

TEST_F(ProgramFile, HasTheBytesOfTheFile) {
    std::ofstream(path()) << "abcdef";
    const Inspection::ProgramFile file(path());
    ASSERT_TRUE(file);
    EXPECT_EQ(file.bytesAt(1, 3), "bcd");
    EXPECT_EQ(file.bytesAt(3, 3), "def");
    EXPECT_EQ(file.bytesAt(4, 3), std::nullopt);
    EXPECT_EQ(file.bytesAt(~std::uint64_t{0}, 1), std::nullopt);
}

TEST_F(ProgramFile, IsFoundBehindASymbolicLink) {
    std::ofstream(folders.root() / "library") << "abc";
    fs::create_symlink("library", path());
    EXPECT_EQ(Inspection::ProgramFile(path()).bytesAt(0, 3), "abc");
}

TEST_F(ProgramFile, StaysTheFileThatWasFound) {
    std::ofstream(path()) << "found";
    const Inspection::ProgramFile file(path());
    std::ofstream(folders.root() / "other") << "other";
    fs::rename(folders.root() / "other", path());
    EXPECT_EQ(file.bytesAt(0, 5), "found");
    EXPECT_EQ(Tests::contentsOf(file.path()), "found");
}

TEST_F(ProgramFile, IsNoneWhereNoRegularFileIs) {
    for (const std::string& other : {folders.root().string(), path(), std::string("/dev/zero")}) {
        const Inspection::ProgramFile file(other);
        EXPECT_FALSE(file) << other;
        EXPECT_EQ(file.bytesAt(0, 1), std::nullopt) << other;
    }
}

// It would let who waits there for a reader go on.
TEST_F(ProgramFile, DoesNotOpenANamedPipe) {
    ASSERT_EQ(::mkfifo(path().c_str(), 0600), 0);
    watch();
    EXPECT_FALSE(Inspection::ProgramFile(path()));
    EXPECT_FALSE(wasOpened());
    const NS::FileDescriptor reader(::open(path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    EXPECT_TRUE(wasOpened());
}

} // namespace
