#include "Programs/QuorvaneHost/HostData.h"

#include "Programs/QuorvaneHost/DriveTree.h"
#include "Tests/Support/PrivateFolders.h"

#include <fstream>

namespace fs = std::filesystem;

namespace {

class HostData : public Tests::FolderTest {};

TEST_F(HostData, IsAFolderOfItsOwnForEachDrive) {
    const std::string one = hostDataFolderFor("/drives/one");
    EXPECT_EQ(fs::path(one).parent_path(), folders.data() / "Quorvane/Host");
    EXPECT_TRUE(fs::is_directory(one));
    EXPECT_EQ(hostDataFolderFor("/drives/one"), one);
    EXPECT_NE(hostDataFolderFor("/drives/two"), one);
}

TEST_F(HostData, IsRefusedWhereItCannotBeMade) {
    fs::create_directories(folders.data() / "Quorvane");
    std::ofstream(folders.data() / "Quorvane/Host") << "a file";
    EXPECT_THROW((void)hostDataFolderFor("/drive"), Refusal);
}

TEST_F(HostData, HasOneHostAtATime) {
    const std::string folder = hostDataFolderFor("/drive");
    NS::FileDescriptor first = lockHostData(folder);
    EXPECT_THROW((void)lockHostData(folder), Refusal);
    const auto other = lockHostData(hostDataFolderFor("/other"));
    EXPECT_TRUE(other);
    first.reset();
    EXPECT_TRUE(lockHostData(folder));
}

TEST_F(HostData, NamesThingsByAHashThatStaysTheSame) {
    EXPECT_EQ(shortNameFor(""), "cbf29ce484222325");
    EXPECT_EQ(shortNameFor("a"), "af63dc4c8601ec8c");
    EXPECT_EQ(shortNameFor("\xFF").size(), 16U);
}

} // namespace
