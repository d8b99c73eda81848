#include "Shell/Client/FileURLText.h"

#include <gtest/gtest.h>

namespace {

TEST(FileURLText, IsThePathBehindTheScheme) {
    EXPECT_EQ(Shell::fileURLOf("/mnt/Drive/a.txt"), "file:///mnt/Drive/a.txt");
    EXPECT_EQ(Shell::fileURLOf("/"), "file:///");
}

TEST(FileURLText, EncodesWhatAURLDoesNotHold) {
    EXPECT_EQ(Shell::fileURLOf("/a b\n%\"?#[\\]"), "file:///a%20b%0A%25%22%3F%23%5B%5C%5D");
    EXPECT_EQ(Shell::fileURLOf("/a:b"), "file:///a%3Ab");
    EXPECT_EQ(Shell::fileURLOf("/\xC3\xA9\xFF"), "file:///%C3%A9%FF");
}

TEST(FileURLText, KeepsEveryByteThatANameCanHave) {
    for (unsigned byte = 1; byte < 256; ++byte) {
        const std::string path = std::string("/a") + static_cast<char>(byte) + "b";
        EXPECT_EQ(Shell::pathOfFileURL(Shell::fileURLOf(path)), path) << byte;
    }
}

TEST(FileURLText, HoldsNothingButWhatTheExtensionTakes) {
    for (unsigned byte = 1; byte < 256; ++byte) {
        const std::string url = Shell::fileURLOf(std::string("/") + static_cast<char>(byte));
        EXPECT_EQ(url.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                        "0123456789-._~!$&'()*+,;=:@/%"),
                  std::string::npos)
            << byte;
    }
}

TEST(FileURLText, LosesSlashesAtItsEnd) {
    EXPECT_EQ(Shell::pathOfFileURL("file:///mnt/Drive/"), "/mnt/Drive");
    EXPECT_EQ(Shell::pathOfFileURL("file:///mnt/Drive//"), "/mnt/Drive");
    EXPECT_EQ(Shell::pathOfFileURL("file:///"), "/");
}

class MalformedFileURLText : public testing::TestWithParam<const char*> {};

TEST_P(MalformedFileURLText, HasNoPath) {
    EXPECT_EQ(Shell::pathOfFileURL(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(FileURLText, MalformedFileURLText,
                         testing::Values("", "/mnt/a", "file:", "file://", "file:/mnt/a",
                                         "file://host/mnt/a", "http:///mnt/a", "file:///a%",
                                         "file:///a%4", "file:///a%4g", "file:///a%-1",
                                         "file:///a%00", "file:///a%2Fb", "file:///a%2f"));

} // namespace
