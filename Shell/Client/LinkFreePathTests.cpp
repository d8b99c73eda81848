#include "Shell/Client/LinkFreePath.h"

#include "Tests/Support/PrivateFolders.h"

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

class LinkFreePath : public Tests::FolderTest {
  protected:
    LinkFreePath() {
        fs::create_directories(root / "folder" / "deep");
        fs::create_directory_symlink(root / "folder", root / "link");
    }
    bool isFree(const char* path) const { return Shell::isFreeOfLinks((root / path).string()); }

    // The temporary folder may itself be reached by a link.
    fs::path root = fs::canonical(folders.root());
};

TEST_F(LinkFreePath, TellsAFolderWithoutLinks) {
    EXPECT_TRUE(isFree("folder"));
    EXPECT_TRUE(isFree("folder/deep"));
    EXPECT_TRUE(Shell::isFreeOfLinks("/"));
}

TEST_F(LinkFreePath, SeesALinkOnTheWayAndAtTheEnd) {
    EXPECT_FALSE(isFree("link"));
    EXPECT_FALSE(isFree("link/deep"));
}

TEST_F(LinkFreePath, KnowsNothingOfWhatIsNotThere) {
    EXPECT_FALSE(isFree("absent"));
    EXPECT_FALSE(Shell::isFreeOfLinks(""));
}

TEST_F(LinkFreePath, TellsAFileWithoutLinksAndLeavesItAlone) {
    std::ofstream(root / "file") << "text";
    const auto before = fs::last_write_time(root / "file");
    EXPECT_TRUE(isFree("file"));
    EXPECT_FALSE(isFree("link/deep/../file"));
    EXPECT_EQ(fs::file_size(root / "file"), 4U);
    EXPECT_EQ(fs::last_write_time(root / "file"), before);
}

TEST_F(LinkFreePath, SeesALinkAtTheEndAlone) {
    const auto isNoLink = [&](const char* path) {
        return Shell::isNoLink((root / path).string());
    };
    EXPECT_TRUE(isNoLink("folder"));
    EXPECT_TRUE(isNoLink("link/deep"));
    EXPECT_FALSE(isNoLink("link"));
    EXPECT_FALSE(isNoLink("absent"));
    EXPECT_FALSE(isNoLink("absent/deep"));
}

TEST_F(LinkFreePath, LeavesNothingOpen) {
    const auto openFiles = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = openFiles();
    EXPECT_TRUE(isFree("folder/deep"));
    EXPECT_EQ(openFiles(), before);
}

} // namespace
