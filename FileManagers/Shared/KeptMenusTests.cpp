#include "FileManagers/Shared/KeptMenus.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::chrono_literals;
using Shell::MenuKind;
using Shell::Place;

class KeptMenus : public testing::Test {
  protected:
    static Shell::Menu menuOf(const std::string& title) { return {title, {{title, "a", true}}}; }
    void keep(const Place& place, const std::string& title, std::uint64_t generation = 1,
              MenuKind kind = MenuKind::kItems) {
        menus.keep(kind, place, generation, now, menuOf(title));
    }
    std::string find(const Place& place, std::uint64_t generation = 1,
                     MenuKind kind = MenuKind::kItems, std::chrono::milliseconds later = 0ms) {
        const Shell::Menu* const menu = menus.find(kind, place, generation, now + later);
        return menu == nullptr ? "none" : menu->title;
    }
    std::string findToolbar(std::uint64_t generation, std::chrono::milliseconds later = 0ms) {
        return find(folder, generation, MenuKind::kToolbar, later);
    }

    const FileManagers::KeptMenus::Clock::time_point now{1h};
    const Place folder{{}, "/d"};
    FileManagers::KeptMenus menus{1s};
};

TEST_F(KeptMenus, HaveNothingThatWasNotKept) {
    EXPECT_EQ(find(folder), "none");
}

TEST_F(KeptMenus, TellPlacesAndKindsApart) {
    keep({{"/d/a"}, "/d"}, "a");
    EXPECT_EQ(find({{"/d/a"}, "/d"}), "a");
    EXPECT_EQ(find({{"/d/b"}, "/d"}), "none");
    EXPECT_EQ(find({
                  {"/d/a", "/d/b"},
                  "/d"
    }),
              "none");
    EXPECT_EQ(find({{"/d/a"}, "/d/e"}), "none");
    EXPECT_EQ(find({{"/d/a"}, "/d"}, 1, MenuKind::kSidebar), "none");
}

TEST_F(KeptMenus, AreGoodForOneGeneration) {
    keep(folder, "first", 1);
    keep(folder, "first", 1);
    EXPECT_EQ(find(folder, 2), "none");
    keep(folder, "second", 2);
    EXPECT_EQ(find(folder, 2), "second");
    EXPECT_EQ(find(folder, 1), "none");
}

TEST_F(KeptMenus, AreThoseThatWereUsedLast) {
    for (const char* const name : {"1", "2", "3", "4"}) {
        keep({{name}, ""}, name);
    }
    EXPECT_EQ(find({{"1"}, ""}), "1");
    keep({{"5"}, ""}, "5");
    EXPECT_EQ(find({{"2"}, ""}), "none");
    for (const char* const name : {"1", "3", "4", "5"}) {
        EXPECT_EQ(find({{name}, ""}), name);
    }
}

TEST_F(KeptMenus, AskForTheToolbarsAgainInANewGeneration) {
    keep(folder, "Empty Trash (1)", 1, MenuKind::kToolbar);
    EXPECT_EQ(findToolbar(1), "Empty Trash (1)");
    EXPECT_EQ(findToolbar(2), "none");
    keep(folder, "Empty Trash (2)", 2, MenuKind::kToolbar);
    EXPECT_EQ(findToolbar(3), "none");
}

TEST_F(KeptMenus, LetTheAskingForTheToolbarsHaveAnEnd) {
    keep(folder, "Empty Trash (1)", 1, MenuKind::kToolbar);
    keep(folder, "Empty Trash (1)", 2, MenuKind::kToolbar);
    EXPECT_EQ(findToolbar(3), "Empty Trash (1)");
    EXPECT_EQ(findToolbar(4, 999ms), "Empty Trash (1)");
    EXPECT_EQ(findToolbar(4, 1000ms), "none");
}

} // namespace
