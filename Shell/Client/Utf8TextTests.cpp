#include "Shell/Client/Utf8Text.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Utf8Text, IsOfCharactersOfAllLengths) {
    for (const char* const text :
         {"", "ascii \x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
          "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "a\u00E9\u2014\U0001F40Bz"}) {
        EXPECT_TRUE(Shell::isUtf8(text)) << text;
    }
    EXPECT_TRUE(Shell::isUtf8(std::string(3, '\0')));
}

TEST(Utf8Text, IsNotOfBytesThatBeginNoCharacter) {
    for (const char* const text :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xF5\x80\x80\x80", "\xFE", "\xFF", "a\x80z"}) {
        EXPECT_FALSE(Shell::isUtf8(text)) << text;
    }
}

TEST(Utf8Text, IsNotOfLongerFormsSurrogatesAndMoreThanUnicodeHas) {
    for (const char* const text :
         {"\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80"}) {
        EXPECT_FALSE(Shell::isUtf8(text)) << text;
    }
}

TEST(Utf8Text, IsToldWhereverABadByteIs) {
    for (std::size_t at = 0; at < 40; ++at) {
        std::string text(40, 'a');
        text.replace(at, 1, "\u00E9");
        EXPECT_TRUE(Shell::isUtf8(text)) << at;
        text.erase(at, 1);
        EXPECT_FALSE(Shell::isUtf8(text)) << at;
    }
}

TEST(Utf8Text, IsNotCutOff) {
    for (const std::string text : {"\u00E9", "\u2014", "\U0001F40B"}) {
        for (std::size_t length = 1; length < text.size(); ++length) {
            EXPECT_FALSE(Shell::isUtf8(text.substr(0, length)));
            EXPECT_FALSE(Shell::isUtf8(text.substr(0, length) + "abc"));
        }
    }
}

} // namespace
