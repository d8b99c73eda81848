#include "FileManagers/Shared/KeptMenus.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Shell::MenuKind;
using Shell::Place;

class KeptMenus : public testing::Test {
  protected:
    static Shell::Menu menuOf(const std::string& title) { return {title, {{title, "a", true}}}; }
    void keep(const Place& place, const std::string& title, std::uint64_t generation = 1,
              MenuKind kind = MenuKind::kItems) {
        menus.keep(kind, place, generation, menuOf(title));
    }
    std::string find(const Place& place, std::uint64_t generation = 1,
                     MenuKind kind = MenuKind::kItems) {
        const Shell::Menu* const menu = menus.find(kind, place, generation);
        return menu == nullptr ? "none" : menu->title;
    }

    const Place folder{{}, "/d"};
    FileManagers::KeptMenus menus;
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

TEST_F(KeptMenus, AreOfManyFoldersWhateverIsSelected) {
    constexpr auto kMost = FileManagers::KeptMenus::kMostFolders;
    for (std::size_t number = 0; number <= kMost; ++number) {
        const std::string name = std::to_string(number);
        keep({{}, name}, name);
        keep({{name}, ""}, name);
    }
    EXPECT_EQ(find({{}, "0"}), "none");
    EXPECT_EQ(find({{}, "1"}), "1");
    EXPECT_EQ(find({{}, std::to_string(kMost)}), std::to_string(kMost));
}

} // namespace
