#include "Shell/Client/Offer.h"

#include "Tests/Support/PrivateFolders.h"

#include <filesystem>
#include <ostream>

namespace Shell {

// For failing tests.
void PrintTo(const PlaceURLs& urls, std::ostream* stream) {
    for (const std::string& item : urls.items) {
        *stream << item << ' ';
    }
    *stream << "> " << urls.target;
}

} // namespace Shell

namespace {

using Shell::MenuKind;
using Shell::Place;
using Shell::PlaceURLs;

constexpr MenuKind kItems = MenuKind::kItems;
constexpr MenuKind kContainer = MenuKind::kContainer;
constexpr MenuKind kSidebar = MenuKind::kSidebar;
constexpr MenuKind kToolbar = MenuKind::kToolbar;

struct Row {
    const char* what;
    std::vector<MenuKind> kinds;
    Place place;
    std::optional<PlaceURLs> asked; // nothing: not offered
};

// The drive is "/mnt/Drive", which does not exist.
const Row kRows[] = {
    {"an item",
     {kItems, kSidebar, kToolbar},
     {{"/mnt/Drive/a"}, ""},
     PlaceURLs{{"file:///mnt/Drive/a"}, ""}                                                                                    },
    {"items in their order",
     {kItems},
     {{"/mnt/Drive/b", "/mnt/Drive/a"}, "/mnt/Drive"},
     PlaceURLs{{"file:///mnt/Drive/b", "file:///mnt/Drive/a"}, "file:///mnt/Drive"}                                            },
    {"the background of the drive",
     {kContainer, kToolbar},
     {{}, "/mnt/Drive/"},
     PlaceURLs{{}, "file:///mnt/Drive"}                                                                                        },
    {"the background of a folder",
     {kContainer, kToolbar},
     {{}, "/mnt/Drive/a/./b"},
     PlaceURLs{{}, "file:///mnt/Drive/a/b"}                                                                                    },
    {"a background with a selection",
     {kContainer},
     {{"/mnt/Drive/a"}, "/mnt/Drive"},
     PlaceURLs{{"file:///mnt/Drive/a"}, "file:///mnt/Drive"}                                                                   },
    {"a background, asked for as items",       {kItems, kSidebar},             {{}, "/mnt/Drive"},                 std::nullopt},
    {"an item, asked for as a background",     {kContainer},                   {{"/mnt/Drive/a"}, ""},             std::nullopt},
    {"nothing",                                {kItems, kContainer, kSidebar}, {{}, ""},                           std::nullopt},
    {"nothing, in the toolbar",                {kToolbar},                     {{}, ""},                           PlaceURLs{} },
    {"an item elsewhere",                      {kItems, kSidebar},             {{"/home/a"}, "/home"},             std::nullopt},
    {"a background elsewhere",                 {kContainer},                   {{}, "/home"},                      std::nullopt},
    {"a place elsewhere, in the toolbar",
     {kToolbar},
     {{"/home/a"}, "/home"},
     PlaceURLs{{"file:///home/a"}, ""}                                                                                         },
    {"items here and elsewhere",
     {kItems, kSidebar},
     {{"/home/a", "/mnt/Drive/a"}, "/home"},
     PlaceURLs{{"file:///home/a", "file:///mnt/Drive/a"}, ""}                                                                  },
    {"the drive in its parent folder",         {kItems, kSidebar},             {{"/mnt/Drive"}, "/mnt"},           std::nullopt},
    {"the drive among others",
     {kItems, kContainer, kSidebar},
     {{"/mnt/Drive/a", "/mnt/Drive/."}, "/mnt/Drive"},
     std::nullopt                                                                                                              },
    {"the drive among others, in the toolbar",
     {kToolbar},
     {{"/mnt/Drive/a", "/mnt/Drive/."}, "/mnt/Drive"},
     PlaceURLs{{"file:///mnt/Drive/a"}, "file:///mnt/Drive"}                                                                   },
    {"a neighbour",                            {kItems, kSidebar},             {{"/mnt/Drive2/a"}, "/mnt/Drive2"}, std::nullopt},
    {"a neighbour's background",               {kContainer},                   {{}, "/mnt/Drive2"},                std::nullopt},
    {"a neighbour among items",
     {kItems, kContainer, kSidebar},
     {{"/mnt/Drive/a", "/mnt/Drive2/a"}, "/mnt/Drive"},
     std::nullopt                                                                                                              },
    {"a neighbour, in the toolbar",            {kToolbar},                     {{"/mnt/Drive2/a"}, "/mnt/Drive2"}, PlaceURLs{} },
    {"a neighbour's folder with an item",
     {kItems},
     {{"/mnt/Drive/a"}, "/mnt/Drive2"},
     PlaceURLs{{"file:///mnt/Drive/a"}, ""}                                                                                    },
    {"what is no path",
     {kItems, kContainer, kSidebar},
     {{"/mnt/Drive/a", "a"}, "/mnt/Drive"},
     std::nullopt                                                                                                              },
    {"what is no path, in the toolbar",        {kToolbar},                     {{"a"}, "a"},                       PlaceURLs{} },
    {"a name of any bytes",
     {kItems},
     {{"/mnt/Drive/a b\n%\xFF"}, ""},
     PlaceURLs{{"file:///mnt/Drive/a%20b%0A%25%FF"}, ""}                                                                       },
};

TEST(Offer, FollowsItsRules) {
    for (const Row& row : kRows) {
        for (const MenuKind kind : row.kinds) {
            EXPECT_EQ(Shell::offeredPlace({"/mnt/Drive"}, kind, row.place), row.asked)
                << row.what << ", kind " << static_cast<std::uint64_t>(kind);
        }
    }
}

TEST(Offer, IsTheToolbarsAloneWhereNothingIsWatched) {
    const Place place{{"/mnt/Drive/a"}, "/mnt/Drive"};
    for (const MenuKind kind : {kItems, kContainer, kSidebar}) {
        EXPECT_EQ(Shell::offeredPlace({}, kind, place), std::nullopt);
    }
    EXPECT_EQ(Shell::offeredPlace({}, kToolbar, place), (PlaceURLs{{"file:///mnt/Drive/a"}, ""}));
}

class OfferOnDisk : public Tests::FolderTest {};

TEST_F(OfferOnDisk, SeesThroughLinks) {
    const auto root = std::filesystem::canonical(folders.root());
    std::filesystem::create_directories(root / "drive/docs");
    std::filesystem::create_symlink(root / "drive", root / "link");
    const Place place{{root / "link/docs/a"}, root / "link"};
    const std::string drive = "file://" + (root / "drive").string();
    EXPECT_EQ(Shell::offeredPlace({root / "drive"}, kItems, place),
              (PlaceURLs{{drive + "/docs/a"}, drive}));
}

} // namespace
