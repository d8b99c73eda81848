#include "Programs/Finder/MenuText.h"

#include <gtest/gtest.h>

namespace {

const Shell::Menu kMenu{
    "Fennmoor Cloud",
    {{"Empty Trash (3)", "emptyTrash", true},
      {"\u2014\u2014", "", false},
      {"1 KB used", "", false}}
};

TEST(MenuText, IsJsonInMenuOrder) {
    const std::string expected =
        R"({"title":"Fennmoor Cloud","items":[)"
        R"x({"title":"Empty Trash (3)","action":"emptyTrash","enabled":true},)x"
        "{\"title\":\"\u2014\u2014\",\"action\":null,\"enabled\":false},"
        R"({"title":"1 KB used","action":null,"enabled":false}]})";
    EXPECT_EQ(jsonOf(kMenu), expected);
}

TEST(MenuText, IsJsonOfAnEmptyMenu) {
    EXPECT_EQ(jsonOf(Shell::Menu{"T", {}}), R"({"title":"T","items":[]})");
}

TEST(MenuText, HasALineForEachEntry) {
    EXPECT_EQ(textOf(kMenu, Dimming::kNone), "Empty Trash (3)\n\u2014\u2014\n1 KB used\n");
}

TEST(MenuText, DimsWhatCannotBePickedOnATerminal) {
    EXPECT_EQ(textOf(kMenu, Dimming::kTerminal),
              "Empty Trash (3)\n\033[2m\u2014\u2014\033[0m\n\033[2m1 KB used\033[0m\n");
}

TEST(MenuText, DoesNotLetATitleSteerTheTerminal) {
    EXPECT_EQ(textOf({"T", {{"a\033[2J\nb\u009b2J\u00e9", "x", true}}}, Dimming::kTerminal),
              "a?[2J?b?2J\u00e9\n");
}

TEST(EntryTitled, PrefersTheExactTitle) {
    const Shell::Menu menu{
        "T", {{"Share (1)", "counted", true}, {"Share", "exact", true}}
    };
    EXPECT_EQ(entryTitled(menu, "Share")->action, "exact");
    EXPECT_EQ(entryTitled(menu, "Share (1)")->action, "counted");
}

TEST(EntryTitled, LetsACountBeLeftOut) {
    EXPECT_EQ(entryTitled(kMenu, "Empty Trash")->action, "emptyTrash");
}

TEST(EntryTitled, FindsNothingElse) {
    for (const char* const title : {"Empty", "empty trash", "Empty Trash (4)", ""}) {
        EXPECT_EQ(entryTitled(kMenu, title), nullptr) << title;
    }
}

} // namespace
