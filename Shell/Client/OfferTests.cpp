#include "Shell/Client/Offer.h"

#include "Tests/Support/PrivateFolders.h"

#include <algorithm>
#include <filesystem>

namespace {

using Shell::MenuKind;
using Shell::Place;

constexpr MenuKind kItems = MenuKind::kItems;
constexpr MenuKind kContainer = MenuKind::kContainer;
constexpr MenuKind kSidebar = MenuKind::kSidebar;
constexpr MenuKind kToolbar = MenuKind::kToolbar;

struct Row {
    const char* what;
    std::vector<MenuKind> kinds;
    Place place;
    const char* asked;
};

// What is asked about, items before ">" and the target behind it; "nothing" when it is not offered.
std::string asked(const std::vector<std::string>& watchedFolders, MenuKind kind,
                  const Place& place) {
    const auto offered = Shell::offeredPlace(watchedFolders, kind, place);
    if (!offered) {
        return "nothing";
    }
    std::string items(offered->items.size(), '?');
    offered->items.copyTo(items.data());
    std::ranges::replace(items, '\0', ' ');
    return items + "> " + offered->target;
}

// The drive is "/mnt/Drive", which does not exist.
const Row kRows[] = {
    {"an item",                                {kItems, kSidebar, kToolbar},   {{"/mnt/Drive/a"}, ""},             "/mnt/Drive/a > "         },
    {"items in their order",
     {kItems},
     {{"/mnt/Drive/b", "/mnt/Drive/a"}, "/mnt/Drive"},
     "/mnt/Drive/b /mnt/Drive/a > /mnt/Drive"                                                                                                },
    {"the background of the drive",            {kContainer, kToolbar},         {{}, "/mnt/Drive/"},                "> /mnt/Drive"            },
    {"the background of a folder",
     {kContainer, kToolbar},
     {{}, "/mnt/Drive/a/./b"},
     "> /mnt/Drive/a/b"                                                                                                                      },
    {"a background with a selection",
     {kContainer},
     {{"/mnt/Drive/a"}, "/mnt/Drive"},
     "/mnt/Drive/a > /mnt/Drive"                                                                                                             },
    {"a background, asked for as items",       {kItems, kSidebar},             {{}, "/mnt/Drive"},                 "nothing"                 },
    {"an item, asked for as a background",     {kContainer},                   {{"/mnt/Drive/a"}, ""},             "nothing"                 },
    {"nothing",                                {kItems, kContainer, kSidebar}, {{}, ""},                           "nothing"                 },
    {"nothing, in the toolbar",                {kToolbar},                     {{}, ""},                           "> "                      },
    {"an item elsewhere",                      {kItems, kSidebar},             {{"/home/a"}, "/home"},             "nothing"                 },
    {"a background elsewhere",                 {kContainer},                   {{}, "/home"},                      "nothing"                 },
    {"a place elsewhere, in the toolbar",      {kToolbar},                     {{"/home/a"}, "/home"},             "/home/a > "              },
    {"items here and elsewhere",
     {kItems, kSidebar},
     {{"/home/a", "/mnt/Drive/a"}, "/home"},
     "/home/a /mnt/Drive/a > "                                                                                                               },
    {"an item of the root folder",             {kItems, kSidebar},             {{"/home"}, "/"},                   "nothing"                 },
    {"the drive in its parent folder",         {kItems, kSidebar},             {{"/mnt/Drive"}, "/mnt"},           "nothing"                 },
    {"the drive among others",
     {kItems, kContainer, kSidebar},
     {{"/mnt/Drive/a", "/mnt/Drive/."}, "/mnt/Drive"},
     "nothing"                                                                                                                               },
    {"the drive among others, in the toolbar",
     {kToolbar},
     {{"/mnt/Drive/a", "/mnt/Drive/."}, "/mnt/Drive"},
     "/mnt/Drive/a > /mnt/Drive"                                                                                                             },
    {"a neighbour",                            {kItems, kSidebar},             {{"/mnt/Drive2/a"}, "/mnt/Drive2"}, "nothing"                 },
    {"a neighbour's background",               {kContainer},                   {{}, "/mnt/Drive2"},                "nothing"                 },
    {"a neighbour among items",
     {kItems, kContainer, kSidebar},
     {{"/mnt/Drive/a", "/mnt/Drive2/a"}, "/mnt/Drive"},
     "nothing"                                                                                                                               },
    {"a neighbour, in the toolbar",            {kToolbar},                     {{"/mnt/Drive2/a"}, "/mnt/Drive2"}, "> "                      },
    {"a neighbour's folder with an item",
     {kItems},
     {{"/mnt/Drive/a"}, "/mnt/Drive2"},
     "/mnt/Drive/a > "                                                                                                                       },
    {"what is no path",
     {kItems, kContainer, kSidebar},
     {{"/mnt/Drive/a", "a"}, "/mnt/Drive"},
     "nothing"                                                                                                                               },
    {"what is no path, in the toolbar",        {kToolbar},                     {{"a"}, "a"},                       "> "                      },
    {"a name of any bytes",                    {kItems},                       {{"/mnt/Drive/a b\n%\xFF"}, ""},    "/mnt/Drive/a b\n%\xFF > "},
};

TEST(Offer, FollowsItsRules) {
    for (const Row& row : kRows) {
        for (const MenuKind kind : row.kinds) {
            EXPECT_EQ(asked({"/mnt/Drive"}, kind, row.place), row.asked)
                << row.what << ", kind " << static_cast<std::uint64_t>(kind);
        }
    }
}

TEST(Offer, IsTheToolbarsAloneWhereNothingIsWatched) {
    const Place place{{"/mnt/Drive/a"}, "/mnt/Drive"};
    for (const MenuKind kind : {kItems, kContainer, kSidebar}) {
        EXPECT_EQ(asked({}, kind, place), "nothing");
    }
    EXPECT_EQ(asked({}, kToolbar, place), "/mnt/Drive/a > ");
}

class OfferOnDisk : public Tests::FolderTest {};

TEST_F(OfferOnDisk, SeesThroughLinks) {
    const auto root = std::filesystem::canonical(folders.root());
    std::filesystem::create_directories(root / "drive/docs");
    std::filesystem::create_symlink(root / "drive", root / "link");
    const Place place{{root / "link/docs/a"}, root / "link"};
    const std::string drive = (root / "drive").string();
    EXPECT_EQ(asked({root / "drive"}, kItems, place), drive + "/docs/a > " + drive);
}

} // namespace
