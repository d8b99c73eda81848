#include "Platform/Foundation/StringBuilder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class StringBuilder : public testing::Test {
  protected:
    std::string text() const { return builder.string()->utf8(); }

    NS::StringBuilder builder;
};

TEST_F(StringBuilder, StartsEmpty) {
    EXPECT_EQ(builder.length(), 0U);
    EXPECT_EQ(text(), "");
}

TEST_F(StringBuilder, KeepsItsTextWhenItMakesRoom) {
    builder.appendAscii("ab");
    builder.reserve(1000);
    builder.append('c');
    EXPECT_EQ(text(), "abc");
    builder.appendUnit(u'\xE9');
    builder.reserve(10);
    EXPECT_EQ(text(), "abc\xC3\xA9");
}

// Texts stand in place up to some length, which is none of the user's business.
TEST_F(StringBuilder, TakesTextsOfEveryLength) {
    std::string expected;
    for (int length = 0; length < 600; ++length) {
        ASSERT_EQ(builder.ascii(), expected);
        ASSERT_EQ(builder.length(), expected.size());
        const char next = static_cast<char>('a' + length % 26);
        builder.append(next);
        expected += next;
    }
    EXPECT_EQ(text(), expected);
}

TEST_F(StringBuilder, TakesPiecesThatDoNotFitInPlace) {
    for (const std::size_t length : {255U, 256U, 257U, 258U}) {
        NS::StringBuilder whole;
        whole.appendAscii(std::string(length, 'a'));
        EXPECT_EQ(whole.ascii(), std::string(length, 'a'));
        NS::StringBuilder pieces;
        pieces.append('b');
        pieces.appendAscii(std::string(length, 'a'));
        EXPECT_EQ(pieces.ascii(), 'b' + std::string(length, 'a'));
    }
}

TEST_F(StringBuilder, WidensALongText) {
    builder.appendAscii(std::string(250, 'a'));
    builder.appendRepeated('b', 300);
    builder.appendUnit(u'\xE9');
    builder.appendAscii("c");
    EXPECT_EQ(text(), std::string(250, 'a') + std::string(300, 'b') + "\xC3\xA9" + "c");
    EXPECT_EQ(builder.length(), 552U);
}

TEST_F(StringBuilder, StaysNarrowForAscii) {
    builder.append('a');
    builder.appendAscii("bc");
    builder.append(*NS::str("de"));
    builder.appendUnit(u'f');
    builder.appendCodePoint(U'g');
    EXPECT_EQ(text(), "abcdefg");
    EXPECT_EQ(builder.length(), 7U);
    EXPECT_TRUE(builder.string()->isAscii());
    EXPECT_TRUE(builder.isAscii());
    EXPECT_EQ(builder.ascii(), "abcdefg");
}

TEST_F(StringBuilder, WidensAtTheFirstOtherCharacterAndGoesOn) {
    builder.appendAscii("ab");
    builder.appendUnit(u'\xE9');
    builder.append('c');
    builder.appendAscii("d");
    builder.append(*NS::str("e\xC3\xA9"));
    builder.appendUnit(u'f');
    EXPECT_EQ(text(), "ab\xC3\xA9"
                      "cde\xC3\xA9"
                      "f");
    EXPECT_EQ(builder.length(), 8U);
}

TEST_F(StringBuilder, WidensFromNothing) {
    builder.append(*NS::str("\xC3\xA9"));
    builder.append(*NS::str(""));
    EXPECT_EQ(text(), "\xC3\xA9");
    EXPECT_EQ(builder.length(), 1U);
}

TEST_F(StringBuilder, WritesCodePointsBeyondTheFirstPlaneAsPairs) {
    builder.appendCodePoint(0x1F600);
    builder.appendCodePoint(0xE9);
    EXPECT_EQ(builder.length(), 3U);
    EXPECT_EQ(text(), "\xF0\x9F\x98\x80\xC3\xA9");
}

TEST_F(StringBuilder, RepeatsACharacterInEitherWidth) {
    builder.appendRepeated('-', 3);
    builder.appendRepeated('x', 0);
    builder.appendUnit(u'\xE9');
    builder.appendRepeated('+', 2);
    EXPECT_EQ(text(), "---\xC3\xA9++");
}

TEST_F(StringBuilder, CanGoOnAfterItsTextWasTaken) {
    builder.appendAscii("a");
    const auto first = builder.string();
    builder.appendAscii("b");
    EXPECT_EQ(first->utf8(), "a");
    EXPECT_EQ(text(), "ab");
}

} // namespace
