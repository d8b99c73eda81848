#include "Shell/EncodedMenu.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

NS::Ref<NS::Menu> menuTitled(std::string_view title) {
    return NS::make<NS::Menu>(NS::str(title));
}

NS::Ref<NS::MenuItem> add(NS::Menu& menu, std::string_view title, NS::Selector action) {
    return menu.addItemWithTitle_action_keyEquivalent(NS::str(title), action, NS::str(""));
}

TEST(EncodedMenu, HasTheTitleAndTheEntriesInTheirOrder) {
    const auto menu = menuTitled("Ok");
    add(menu, "A", {"a:"});
    add(menu, "Told", {})->setEnabled(false);
    EXPECT_EQ(Shell::encodedMenu(menu), "\1Ok\0\1A\0a:\0\0Told\0\0"s);
}

TEST(EncodedMenu, HasNoMoreThanItsTitleWithoutEntries) {
    EXPECT_EQ(Shell::encodedMenu(menuTitled("")), "\1\0"s);
    EXPECT_EQ(Shell::encodedMenu(nullptr), "\1\0"s);
}

TEST(EncodedMenu, IsInUTF8) {
    const auto menu = menuTitled("\u2014");
    add(menu, "\U0001F40B", {"whale"});
    EXPECT_EQ(Shell::encodedMenu(menu), "\1\u2014\0\1\U0001F40B\0whale\0"s);
}

TEST(EncodedMenu, CutsATextOffAtANUL) {
    const auto menu = menuTitled("Ok\0no"sv);
    add(menu, "A\0b"sv, {"a:\0b"sv});
    EXPECT_EQ(Shell::encodedMenu(menu), "\1Ok\0\1A\0a:\0"s);
}

} // namespace
