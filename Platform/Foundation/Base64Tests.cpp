#include "Platform/Foundation/Base64.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string decoded(std::string_view text) {
    const auto bytes = NS::base64Decoded(text);
    return bytes ? std::string(NS::charactersOf(*bytes)) : "nothing";
}

TEST(Base64, EncodesGroupsOfThreeBytesAndTheRest) {
    EXPECT_EQ(NS::base64Encoded({}), "");
    EXPECT_EQ(NS::base64Encoded(NS::bytesOf("f")), "Zg==");
    EXPECT_EQ(NS::base64Encoded(NS::bytesOf("fo")), "Zm8=");
    EXPECT_EQ(NS::base64Encoded(NS::bytesOf("foo")), "Zm9v");
    EXPECT_EQ(NS::base64Encoded(NS::bytesOf("foob")), "Zm9vYg==");
    EXPECT_EQ(NS::base64Encoded(NS::bytesOf("\xFB\xFF")), "+/8=");
}

TEST(Base64, DecodesWhatItEncodes) {
    std::string bytes;
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(decoded(NS::base64Encoded(NS::bytesOf(bytes))), bytes);
        bytes.push_back(static_cast<char>(i * 7));
    }
}

TEST(Base64, PassesOverWhiteSpace) {
    EXPECT_EQ(decoded(" Zm\n\t9v\r\nYg = =\n"), "foob");
    EXPECT_EQ(decoded("  "), "");
}

TEST(Base64, RefusesAnythingElse) {
    for (const std::string_view text :
         {"Z", "Zg", "Zg=", "Zg===", "Zm9v=", "====", "Zg==Zg==", "Zm-v", "Zm9v\xC3\xA9", "Z=g="}) {
        EXPECT_FALSE(NS::base64Decoded(text)) << text;
    }
}

} // namespace
