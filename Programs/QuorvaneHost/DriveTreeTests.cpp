#include "Programs/QuorvaneHost/DriveTree.h"

#include "Tests/Support/PrivateFolders.h"

#include <algorithm>
#include <fstream>

namespace fs = std::filesystem;
using namespace std::string_view_literals;

namespace {

class DriveTreeTest : public Tests::FolderTest {
  protected:
    DriveTreeTest() {
        fs::create_directories(drive / "Docs/inner");
        fs::create_directories(folders.root() / "outside");
        std::ofstream(drive / "Docs/a.txt") << "a";
        fs::create_directory_symlink("Docs", drive / "within");
        fs::create_directory_symlink("../outside", drive / "out");
        fs::create_directory_symlink(folders.root() / "outside", drive / "absolute");
        fs::create_directory_symlink("loop", drive / "loop");
    }
    std::string refusalOf(std::string_view path) const {
        try {
            (void)tree().entryAt(path);
        } catch (const Refusal& refusal) {
            return refusal.what();
        }
        return "none";
    }
    DriveTree tree() const { return DriveTree(drive.string()); }

    fs::path drive = folders.root() / "drive";
};

TEST_F(DriveTreeTest, FindsAnEntryInItsFolder) {
    const DriveEntry entry = tree().entryAt("/Docs/a.txt");
    EXPECT_EQ(entry.name, "a.txt");
    EXPECT_EQ(entry.path, "/Docs/a.txt");
    EXPECT_TRUE(existsIn(entry.folder.get(), entry.name));
    EXPECT_TRUE(fs::is_regular_file(entry.systemPath()));
}

TEST_F(DriveTreeTest, FindsTheDriveItself) {
    const DriveEntry entry = tree().entryAt("/");
    EXPECT_EQ(entry.path, "/");
    EXPECT_TRUE(fs::equivalent(entry.systemPath(), drive));
}

TEST_F(DriveTreeTest, FindsWhatDoesNotExistInAFolderThatDoes) {
    const DriveEntry entry = tree().entryAt("/Docs/new");
    EXPECT_FALSE(existsIn(entry.folder.get(), entry.name));
}

TEST_F(DriveTreeTest, TakesRepeatedSlashesAndDotsForNothing) {
    EXPECT_EQ(tree().entryAt("//Docs/./inner/").path, "/Docs/inner");
}

TEST_F(DriveTreeTest, FollowsALinkWithinTheDrive) {
    EXPECT_EQ(tree().entryAt("/within/a.txt").path, "/Docs/a.txt");
}

TEST_F(DriveTreeTest, DoesNotFollowTheEntryItself) {
    EXPECT_EQ(tree().entryAt("/out").path, "/out");
    EXPECT_THROW(tree().folderAt("/within"), Refusal);
}

TEST_F(DriveTreeTest, RefusesALinkOutOfTheDrive) {
    for (const char* const path : {"/out/x", "/absolute/x", "/loop/x"}) {
        EXPECT_EQ(refusalOf(path), "the path leads out of the drive through a symbolic link")
            << path;
    }
}

TEST_F(DriveTreeTest, RefusesAPathThatIsNoneOnTheDrive) {
    for (const auto path : {""sv, "Docs/a.txt"sv, "X/a"sv}) {
        EXPECT_EQ(refusalOf(path), "not a path on the drive: it does not begin with a slash");
    }
    EXPECT_EQ(refusalOf("/a\0b"sv), "the path holds a NUL");
}

TEST_F(DriveTreeTest, RefusesToClimb) {
    for (const char* const path : {"/..", "/../outside", "/Docs/../a", "/Docs/.."}) {
        EXPECT_EQ(refusalOf(path), "the path climbs with \"..\"") << path;
    }
    EXPECT_EQ(refusalOf("/Docs/..a"), "none");
}

TEST_F(DriveTreeTest, RefusesAFolderThatIsNotThere) {
    EXPECT_EQ(refusalOf("/missing/a"), "there is no such item");
    EXPECT_EQ(refusalOf("/Docs/a.txt/a"), "Not a directory");
}

TEST_F(DriveTreeTest, TakesPathsLongerThanACallDoes) {
    std::string path;
    const DriveTree drives = tree();
    for (int i = 0; i < 30; ++i) {
        path += "/" + std::string(250, static_cast<char>('a' + i % 26));
    }
    (void)drives.madeFolderAt(path);
    const DriveEntry entry = drives.entryAt(path + "/file");
    EXPECT_EQ(entry.path, path + "/file");
    EXPECT_FALSE(existsIn(entry.folder.get(), "file"));
}

TEST_F(DriveTreeTest, RefusesALinkOnAPathTooLongToTellWhereItLed) {
    std::string below;
    for (int i = 0; i < 20; ++i) {
        below += "/" + std::string(220, 'f');
    }
    (void)tree().madeFolderAt("/Docs" + below);
    EXPECT_EQ(tree().entryAt("/Docs" + below).path, "/Docs" + below);
    EXPECT_EQ(refusalOf("/within" + below + "/x"),
              "the path is too long to be followed through symbolic links");
}

TEST_F(DriveTreeTest, FollowsTheDriveWhereItIsMoved) {
    const DriveTree before = tree();
    fs::rename(drive, folders.root() / "drive moved");
    EXPECT_EQ(before.entryAt("/within/a.txt").path, "/Docs/a.txt");
}

TEST_F(DriveTreeTest, MakesFoldersThatAreMissing) {
    (void)tree().madeFolderAt("/Docs/new/below");
    EXPECT_TRUE(fs::is_directory(drive / "Docs/new/below"));
    EXPECT_THROW(tree().madeFolderAt("/within/new"), Refusal);
    EXPECT_THROW(tree().madeFolderAt("/Docs/a.txt/new"), Refusal);
}

TEST_F(DriveTreeTest, ListsAFolder) {
    auto entries = entriesIn(tree().folderAt("/Docs").get());
    std::ranges::sort(entries);
    EXPECT_EQ(entries, (std::vector<std::string>{"a.txt", "inner"}));
}

} // namespace
