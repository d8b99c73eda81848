#include "Programs/Json/PercentEncoding.h"

#include <gtest/gtest.h>

namespace {

TEST(PercentEncoding, EncodesWhatIsNotPrintable) {
    EXPECT_EQ(percentEncoded("/a b%\xFF\n~"), "/a%20b%25%FF%0A~");
}

TEST(PercentEncoding, DecodesWhatItEncodes) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes.push_back(static_cast<char>(i));
    }
    EXPECT_EQ(percentDecoded(percentEncoded(bytes)), bytes);
    EXPECT_EQ(percentDecoded("%ff\xC3\xA9"), "\xFF\xC3\xA9");
}

TEST(PercentEncoding, RefusesAPercentSignWithoutDigits) {
    for (const std::string_view text : {"%", "%1", "a%g0", "%0g", "%+1", "% 1"}) {
        EXPECT_FALSE(percentDecoded(text)) << text;
    }
}

} // namespace
