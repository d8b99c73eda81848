#include "Programs/QuorvaneHost/DriveFolder.h"

#include "Tests/Support/PrivateFolders.h"

#include <gtest/gtest.h>

#include <fstream>

namespace fs = std::filesystem;

namespace {

class DriveFolderTest : public Tests::FolderTest {
  protected:
    DriveFolderTest() { fs::create_directories(drive); }

    void write(const fs::path& relative, std::size_t bytes) {
        fs::create_directories((drive / relative).parent_path());
        std::ofstream(drive / relative) << std::string(bytes, 'x');
    }

    fs::path drive = folders.root() / "drive";
};

TEST_F(DriveFolderTest, CountsTheBytesOfAllItsFiles) {
    write("a.txt", 100);
    write("deep/er/b.txt", 20);
    write("Trash/c.txt", 3);
    EXPECT_EQ(DriveFolder(drive).bytesUsed(), 123);
}

TEST_F(DriveFolderTest, DoesNotFollowSymbolicLinks) {
    write("a.txt", 100);
    fs::create_symlink(drive / "a.txt", drive / "link.txt");
    fs::create_directory_symlink(drive, drive / "loop");
    EXPECT_EQ(DriveFolder(drive).bytesUsed(), 100);
}

TEST_F(DriveFolderTest, CountsTheEntriesOfTheTrashNotWhatIsInThem) {
    write("Trash/a.txt", 1);
    write("Trash/folder/b.txt", 1);
    EXPECT_EQ(DriveFolder(drive).trashCount(), 2);
}

TEST_F(DriveFolderTest, HasAnEmptyTrashWhenThereIsNone) {
    EXPECT_EQ(DriveFolder(drive).trashCount(), 0);
}

TEST_F(DriveFolderTest, DoesNotLookIntoATrashThatIsALink) {
    fs::create_directories(folders.root() / "elsewhere" / "x");
    fs::create_directory_symlink(folders.root() / "elsewhere", drive / "Trash");
    EXPECT_EQ(DriveFolder(drive).trashCount(), 0);
}

TEST_F(DriveFolderTest, ResolvesLinksAndSlashesInItsPath) {
    fs::create_directory_symlink(drive, folders.root() / "alias");
    const DriveFolder folder((folders.root() / "alias").string() + "/");
    EXPECT_EQ(folder.path(), fs::canonical(drive).string());
}

TEST_F(DriveFolderTest, RefusesWhatIsNoFolder) {
    write("a.txt", 1);
    EXPECT_THROW(DriveFolder(drive / "a.txt"), fs::filesystem_error);
    EXPECT_THROW(DriveFolder(drive / "missing"), fs::filesystem_error);
}

} // namespace
