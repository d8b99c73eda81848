#include "FileManagers/Qt/LocalPath.h"

#include <gtest/gtest.h>

namespace {

std::string pathOf(const char* url) {
    return FileManagers::localPath(QUrl::fromEncoded(url));
}

TEST(LocalPathOfQUrl, IsInTheBytesOfTheFileSystem) {
    EXPECT_EQ(pathOf("file:///mnt/Drive/a%20b%25.txt"), "/mnt/Drive/a b%.txt");
    EXPECT_EQ(pathOf("file:///mnt/%C3%A4%FF"), "/mnt/\xC3\xA4\xFF");
    EXPECT_EQ(FileManagers::localPath(QUrl::fromLocalFile("/mnt/a#b?c%41")), "/mnt/a#b?c%41");
}

TEST(LocalPathOfQUrl, HasNoSlashAtTheEnd) {
    EXPECT_EQ(pathOf("file:///mnt/Drive/"), "/mnt/Drive");
    EXPECT_EQ(pathOf("file:///"), "/");
}

TEST(LocalPathOfQUrl, IsEmptyForWhatIsNoFileOfThisMachine) {
    EXPECT_EQ(pathOf("trash:/a"), "");
    EXPECT_EQ(pathOf("file://elsewhere/a"), "");
    EXPECT_EQ(FileManagers::localPath(QUrl()), "");
}

} // namespace
