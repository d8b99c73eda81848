#include "FileManagers/GLib/FolderPath.h"

#include <gtest/gtest.h>

namespace {

using FileManagers::OwnedObject;

class FolderPath : public testing::Test {
  protected:
    std::string path(const char* folder, const char* name) {
        return paths.of(OwnedObject<GFile>(g_file_new_for_uri(folder)), name);
    }

    FileManagers::FolderPath paths;
};

TEST_F(FolderPath, IsBeforeTheNameInTheBytesOfTheFileSystem) {
    EXPECT_EQ(path("file:///mnt/a%20b%FF", "c \xFE%20"), "/mnt/a b\xFF/c \xFE%20");
    EXPECT_EQ(path("file:///", "a"), "/a");
}

TEST_F(FolderPath, FollowsTheFiles) {
    EXPECT_EQ(path("file:///mnt/a", "b"), "/mnt/a/b");
    EXPECT_EQ(path("file:///mnt/c", "b"), "/mnt/c/b");
    EXPECT_EQ(path("trash:///", "b"), "");
    EXPECT_EQ(path("file:///mnt/a", "b"), "/mnt/a/b");
}

TEST_F(FolderPath, IsTheSameForTheSameFolder) {
    const OwnedObject<GFile> folder(g_file_new_for_path("/mnt"));
    for (const char* const name : {"a", "b"}) {
        EXPECT_EQ(paths.of(OwnedObject<GFile>(G_FILE(g_object_ref(folder.get()))), name),
                  std::string("/mnt/") + name);
    }
}

TEST_F(FolderPath, IsNoneForOtherPlaces) {
    for (const char* const folder : {"trash:///", "recent:///a", "smb://host/a", "x:y"}) {
        EXPECT_EQ(path(folder, "b"), "") << folder;
    }
}

} // namespace
