#include "Programs/Inspect/Printable.h"

#include <gtest/gtest.h>

namespace {

using Inspection::printable;

TEST(Printable, LeavesTextAsItIs) {
    EXPECT_EQ(printable("a \"b\"\t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x90\x9F \\"),
              "a \"b\"\t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x90\x9F \\");
    EXPECT_EQ(printable(""), "");
}

TEST(Printable, ShowsWhatWouldSteerATerminal) {
    EXPECT_EQ(printable("\x1b[2J\r\n\x7f"), R"(\x1b[2J\x0d\x0a\x7f)");
    EXPECT_EQ(printable(std::string_view("\0", 1)), R"(\x00)");
    EXPECT_EQ(printable("\xC2\x9B\x32J\xC2\xA0"), "\\xc2\\x9b"
                                                  "2J\xC2\xA0");
}

TEST(Printable, ShowsWhatWouldMakeTextLookLikeAnother) {
    EXPECT_EQ(printable("a\u202Etxt.\u202C\u2028\u2029"),
              R"(a\xe2\x80\xaetxt.\xe2\x80\xac\xe2\x80\xa8\xe2\x80\xa9)");
    for (const char* const each : {"\u061C", "\u200B", "\u200E", "\u200F", "\u202A", "\u202D",
                                   "\u2066", "\u2069", "\uFEFF"}) {
        EXPECT_EQ(printable(each).substr(0, 2), R"(\x)") << printable(each);
    }
    for (const char* const each : {"\u061B", "\u200A", "\u2010", "\u2027", "\u202F", "\u2065",
                                   "\u206A", "\uFEFE", "\uFF00"}) {
        EXPECT_EQ(printable(each), each);
    }
}

TEST(Printable, ShowsWhatIsNotUtf8) {
    EXPECT_EQ(printable("ren\xE9"), R"(ren\xe9)");
    EXPECT_EQ(printable("\xF0\x9F\x90"), R"(\xf0\x9f\x90)");
}

} // namespace
