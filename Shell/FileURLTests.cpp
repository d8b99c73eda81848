#include "Shell/FileURL.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string pathOf(std::string_view text) {
    const auto url = Shell::fileURLFromText(text);
    return url ? url->path()->fileSystemRepresentation() : "none";
}

TEST(FileURL, HasThePathOfItsText) {
    EXPECT_EQ(pathOf("file:///mnt/Drive/a.txt"), "/mnt/Drive/a.txt");
    EXPECT_EQ(pathOf("file:///mnt/Drive/"), "/mnt/Drive");
    EXPECT_EQ(pathOf("file:///"), "/");
}

TEST(FileURL, DecodesEveryByteThatANameCanHave) {
    for (unsigned byte = 1; byte < 256; ++byte) {
        if (byte == '/') {
            continue;
        }
        constexpr std::string_view kDigits = "0123456789abcdef";
        const std::string text = {'%', kDigits[byte / 16], kDigits[byte % 16]};
        EXPECT_EQ(pathOf("file:///a" + text),
                  std::string("/a") + static_cast<char>(static_cast<unsigned char>(byte)))
            << byte;
    }
}

TEST(FileURL, TakesWhatAPathHoldsAsItStands) {
    EXPECT_EQ(pathOf("file:///-._~!$&'()*+,;=:@"), "/-._~!$&'()*+,;=:@");
}

TEST(FileURL, KeepsItsTextForTheURL) {
    const auto url = Shell::fileURLFromText("file:///a%20b%C3%A9");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->absoluteString()->utf8(), "file:///a%20b%C3%A9");
    EXPECT_TRUE(url->isFileURL());
    EXPECT_TRUE(url->isEqual(NS::URL::URLWithString(*NS::str("file:///a%20b%C3%A9")).get()));
}

class MalformedFileURL : public testing::TestWithParam<const char*> {};

TEST_P(MalformedFileURL, IsNone) {
    EXPECT_EQ(pathOf(GetParam()), "none");
}

INSTANTIATE_TEST_SUITE_P(FileURL, MalformedFileURL,
                         testing::Values("", "/mnt/a", "file:", "file://", "file:/mnt/a",
                                         "file://host/mnt/a", "FILE:///mnt/a", "http:///mnt/a",
                                         "file:///a b", "file:///a\nb", "file:///\xC3\xA9",
                                         "file:///a?b", "file:///a#b", "file:///a\"b", "file:///a%",
                                         "file:///a%4", "file:///a%4g", "file:///a%g4",
                                         "file:///a%00", "file:///a%2Fb", "file:///a%2f",
                                         " file:///a", "file:///a\\b"));

} // namespace
