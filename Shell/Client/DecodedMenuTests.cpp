#include "Shell/Client/DecodedMenu.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace std::string_literals;
using Shell::decodedMenu;
using Shell::Menu;

const std::string kBytes = "\1Ok\0\1A\0a:\0\0Told \u2014\0\0"s;

TEST(DecodedMenu, HasTheTitleAndTheEntriesInTheirOrder) {
    const Menu menu{
        "Ok", {{"A", "a:", true}, {"Told \u2014", "", false}}
    };
    EXPECT_EQ(decodedMenu(kBytes), menu);
}

TEST(DecodedMenu, MayHaveNoEntriesAndNoTitle) {
    EXPECT_EQ(decodedMenu("\1Ok\0"s), (Menu{"Ok", {}}));
    EXPECT_EQ(decodedMenu("\1\0"s), Menu());
}

TEST(DecodedMenu, IsNoneOfAnotherForm) {
    std::string bytes = kBytes;
    for (int form = 0; form < 256; ++form) {
        bytes[0] = static_cast<char>(form);
        EXPECT_EQ(decodedMenu(bytes).has_value(), form == 1) << form;
    }
    EXPECT_FALSE(decodedMenu(""));
}

TEST(DecodedMenu, IsNoneOfBytesThatAreCutOff) {
    const std::size_t title = kBytes.find('\0') + 1;
    const std::size_t first = kBytes.find("a:") + 3;
    for (std::size_t length = 0; length < kBytes.size(); ++length) {
        // Between entries it is a menu with fewer of them.
        EXPECT_EQ(decodedMenu(kBytes.substr(0, length)).has_value(),
                  length == title || length == first)
            << length;
    }
}

TEST(DecodedMenu, IsNoneWithAFlagThatIsNeither) {
    EXPECT_FALSE(decodedMenu("\1Ok\0\2A\0a:\0"s));
    EXPECT_FALSE(decodedMenu("\1Ok\0A\0a:\0"s));
}

TEST(DecodedMenu, IsNoneOfTextsThatAreNotUTF8) {
    EXPECT_FALSE(decodedMenu("\1\xFF\0"s));
    EXPECT_FALSE(decodedMenu("\1Ok\0\1\xC3\0\xA9\0"s));
    EXPECT_FALSE(decodedMenu("\1Ok\0\1A\0\xED\xA0\x80\0"s));
}

TEST(DecodedMenu, IsNoneOfMoreEntriesThanAMenuHas) {
    std::string bytes = "\1Ok\0"s;
    for (std::size_t i = 0; i < Shell::kMostEntries; ++i) {
        bytes += "\1A\0a:\0"s;
    }
    ASSERT_TRUE(decodedMenu(bytes));
    EXPECT_EQ(decodedMenu(bytes)->entries.size(), Shell::kMostEntries);
    EXPECT_FALSE(decodedMenu(bytes + "\1A\0a:\0"s));
}

TEST(DecodedMenu, IsNoneOfMoreBytesThanAMenuHas) {
    const std::string longest = "\1" + std::string(Shell::kLongestMenu - 2, 'a') + '\0';
    ASSERT_TRUE(decodedMenu(longest));
    EXPECT_EQ(decodedMenu(longest)->title.size(), Shell::kLongestMenu - 2);
    EXPECT_FALSE(decodedMenu("\1a" + longest.substr(1)));
}

// A menu as it is, with one byte of another value at one place, is read to its end or refused.
TEST(DecodedMenu, TakesNoHarmOfAnyByte) {
    for (std::size_t at = 0; at < kBytes.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            std::string bytes = kBytes;
            bytes[at] = static_cast<char>(value);
            const auto menu = decodedMenu(bytes);
            EXPECT_LE(menu ? menu->entries.size() : 0, bytes.size() / 3);
        }
    }
}

} // namespace
