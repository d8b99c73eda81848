#include "Programs/QuorvaneHost/FolderWalk.h"

#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/ScopedOpenFiles.h"

#include <fcntl.h>
#include <fstream>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

class FolderWalkTest : public Tests::FolderTest {
  protected:
    FolderWalkTest() {
        fs::create_directories(folder / "a/b");
        std::ofstream(folder / "a/x") << "12";
        std::ofstream(folder / "a/b/y") << "345";
        fs::create_directory_symlink(folders.root(), folder / "a/link");
    }
    NS::FileDescriptor opened() const {
        return NS::FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    bool removeA() const {
        return removeWhole(opened().get(), "a", [] {});
    }
    // A folder in a folder in a folder …, with a file in the last.
    void makeDeep(int levels) const {
        NS::FileDescriptor at = opened();
        for (int i = 0; i < levels; ++i) {
            ASSERT_EQ(::mkdirat(at.get(), "deep", 0700), 0);
            at.reset(::openat(at.get(), "deep", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        }
        const NS::FileDescriptor file(
            ::openat(at.get(), "file", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_EQ(::write(file.get(), "1234567", 7), 7);
    }

    fs::path folder = folders.root() / "folder";
};

TEST_F(FolderWalkTest, VisitsAFolderBeforeAndAfterWhatItHolds) {
    fs::remove(folder / "a/x");
    fs::remove(folder / "a/link");
    std::vector<std::string> visits;
    const FolderWalk walk(
        [&](int, const std::string& name, const struct stat&) { visits.push_back(name); },
        [&](int, const std::string& name, const struct stat&) { visits.push_back("/" + name); });
    EXPECT_TRUE(walk.below(opened().get()));
    EXPECT_EQ(visits, (std::vector<std::string>{"a", "b", "y", "/b", "/a"}));
}

TEST_F(FolderWalkTest, EndsWhenThereIsNoWayBack) {
    makeDeep(40);
    const fs::path middle = folder / "deep/deep";
    const FolderWalk walk(
        [&](int, const std::string& name, const struct stat&) {
            if (name == "file") {
                fs::rename(middle / "deep", folders.root() / "elsewhere");
            }
        },
        [](int, const std::string&, const struct stat&) {});
    EXPECT_FALSE(walk.below(opened().get()));
    fs::rename(folders.root() / "elsewhere", folder / "elsewhere");
}

TEST_F(FolderWalkTest, CountsWhatIsBelowWithoutFollowingLinks) {
    const FolderContents contents = FolderContents::below(opened().get(), "a");
    EXPECT_EQ(contents.bytes, 5U);
    EXPECT_EQ(contents.files, 3U);
    EXPECT_EQ(contents.folders, 1U);
}

TEST_F(FolderWalkTest, CountsNothingInWhatIsNoFolder) {
    EXPECT_EQ(FolderContents::below(opened().get(), "missing").files, 0U);
    EXPECT_EQ(FolderContents::below(AT_FDCWD, (folder / "a/link").string()).files, 0U);
}

TEST_F(FolderWalkTest, GoesDeeperThanAPathMayBeLong) {
    const Tests::ScopedOpenFiles few(200);
    makeDeep(1'500);
    const FolderContents contents = FolderContents::below(opened().get(), "deep");
    EXPECT_EQ(contents.folders, 1'499U);
    EXPECT_EQ(contents.bytes, 7U);
    EXPECT_TRUE(removeWhole(opened().get(), "deep", [] {}));
    EXPECT_FALSE(fs::exists(folder / "deep"));
}

TEST_F(FolderWalkTest, RemovesAFolderWithAllThatItHolds) {
    EXPECT_TRUE(removeA());
    EXPECT_FALSE(fs::exists(folder / "a"));
    EXPECT_TRUE(fs::exists(folder));
}

TEST_F(FolderWalkTest, RemovesALinkAndAFile) {
    const NS::FileDescriptor a(::open((folder / "a").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(removeWhole(a.get(), "link", [] {}));
    EXPECT_TRUE(removeWhole(a.get(), "x", [] {}));
    EXPECT_FALSE(fs::is_symlink(folder / "a/link"));
    EXPECT_FALSE(removeWhole(a.get(), "x", [] {}));
    EXPECT_TRUE(fs::exists(folder / "a/b/y"));
}

TEST_F(FolderWalkTest, TellsThatSomethingIsLeft) {
    // What comes in while it is removed keeps a folder from going.
    const auto addFile = [&] {
        std::ofstream(folder / "a/b/late") << "x";
    };
    int steps = 0;
    EXPECT_FALSE(removeWhole(opened().get(), "a", [&] {
        if (++steps == 4) {
            addFile();
        }
    }));
    EXPECT_TRUE(fs::exists(folder / "a/b/late"));
}

} // namespace
