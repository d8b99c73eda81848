#include "FileManagers/GLib/LocalPath.h"

#include <gtest/gtest.h>

namespace {

TEST(LocalPath, IsInTheBytesOfTheFileSystem) {
    EXPECT_EQ(FileManagers::localPath("file:///mnt/a%20b%FF"), "/mnt/a b\xFF");
}

TEST(LocalPath, IsEmptyForOtherPlaces) {
    for (const char* const uri : {"", "trash:///a", "smb://host/a", "file://other/a", "/mnt/a"}) {
        EXPECT_EQ(FileManagers::localPath(uri), "") << uri;
    }
    EXPECT_EQ(FileManagers::localPath(nullptr), "");
}

} // namespace
