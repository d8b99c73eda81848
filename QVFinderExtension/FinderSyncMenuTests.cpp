#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVFinderExtension/Testing/SelectionFixture.h"
#include "Tests/Support/ScopedVariable.h"

#include <fstream>

namespace {

using FI::MenuKind;
using Tests::LinkRecorder;

constexpr auto kItems = MenuKind::kContextualMenuForItems;
constexpr auto kContainer = MenuKind::kContextualMenuForContainer;
constexpr auto kSidebar = MenuKind::kContextualMenuForSidebar;
constexpr auto kToolbar = MenuKind::kToolbarItemMenu;

// Entries as "title -> action", a disabled one in brackets.
std::vector<std::string> entriesOf(const NS::Menu& menu) {
    std::vector<std::string> entries;
    for (const auto& item : menu.itemArray()) {
        const std::string action(item->action().name);
        const std::string text = item->title()->utf8() + (action.empty() ? "" : " -> " + action);
        entries.push_back(item->isEnabled() ? text : "[" + text + "]");
    }
    return entries;
}

using Entries = std::vector<std::string>;

const std::string kShare = "QV: Share -> shareItem:";
const std::string kProperties = "QV: Show Properties -> showProps";
const std::string kMove = "QV: Move To Trash -> moveToTrash";
const std::string kRestore = "QV: Restore -> restore";
const std::string kDelete = "QV: Delete -> delete";
const std::string kRefresh = "QV: Refresh Folder -> refreshFolder";
const std::string kDashes = "[\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014"
                            "\u2014\u2014\u2014\u2014\u2014\u2014\u2014]";

struct MenuCase {
    const char* name;
    MenuKind kind;
    std::vector<std::string> items;
    Entries entries;
};

class ContextualMenu : public Tests::SelectionTest, public testing::WithParamInterface<MenuCase> {};

TEST_P(ContextualMenu, HasTheEntriesForItsSelection) {
    selectOnDrive(GetParam().items);
    target("/Volumes/Drive/Docs");
    EXPECT_EQ(entriesOf(*extension->menuForMenuKind(GetParam().kind)), GetParam().entries);
}

INSTANTIATE_TEST_SUITE_P(
    ForItems, ContextualMenu,
    testing::Values(
        MenuCase{
            "None", kItems, {},
              { }
},
        MenuCase{"OneOrdinary", kItems, {"/Docs/a"}, {kShare, kProperties, kMove}},
        MenuCase{"SeveralOrdinary", kItems, {"/a", "/Docs/b"}, {kMove}},
        MenuCase{"OneInTrash", kItems, {"/Trash/a"}, {kRestore, kDelete}},
        MenuCase{"SeveralInTrash", kItems, {"/Trash/a", "/Trash/b/c"}, {kRestore, kDelete}},
        MenuCase{"TrashItself", kItems, {"/Trash"}, {}},
        MenuCase{"SharedFoldersItself", kItems, {"/Shared Folders"}, {}},
        MenuCase{"InSharedFolders", kItems, {"/Shared Folders/a"}, {}},
        MenuCase{"InAndOutOfTrash", kItems, {"/Trash/a", "/b"}, {}},
        MenuCase{"OutAndInTrash", kItems, {"/b", "/Trash/a"}, {}},
        MenuCase{"OrdinaryAndShared", kItems, {"/a", "/Shared Folders"}, {}}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    ForContainer, ContextualMenu,
    testing::Values(
        MenuCase{
            "NothingSelected", kContainer, {        },
              { kShare, kProperties, kRefresh}
},
        MenuCase{"OneOrdinary", kContainer, {"/a"}, {kShare, kProperties, kRefresh}},
        MenuCase{"SeveralOrdinary", kContainer, {"/a", "/b"}, {kShare, kProperties, kRefresh}},
        MenuCase{"InTrash", kContainer, {"/Trash/a"}, {kRestore, kDelete, kRefresh}},
        MenuCase{"TrashItself", kContainer, {"/Trash"}, {kRefresh}},
        MenuCase{"InSharedFolders", kContainer, {"/Shared Folders/a"}, {kRefresh}}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(ForSidebar, ContextualMenu,
                         testing::Values(
                             MenuCase{
                                 "OneOrdinaryFolder", kSidebar, {"/Docs"     },
                                   { kShare, kProperties}
},
                             MenuCase{"SeveralOrdinary", kSidebar, {"/a", "/b"}, {}},
                             MenuCase{"InTrash", kSidebar, {"/Trash/a"}, {kRestore, kDelete}},
                             MenuCase{"TrashItself", kSidebar, {"/Trash"}, {}},
                             MenuCase{"NothingSelected", kSidebar, {}, {}}),
                         [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    ForAKindThatIsNotKnown, ContextualMenu,
    testing::Values(
        MenuCase{
            "OneOrdinary", static_cast<MenuKind>(4), {"/a"        },
              { kShare, kProperties}
},
        MenuCase{"InTrash", static_cast<MenuKind>(99), {"/Trash/a"}, {kRestore, kDelete}}),
    [](const auto& test) { return test.param.name; });

class FinderMenu : public Tests::SelectionTest {
  protected:
    Entries entries(MenuKind kind) { return entriesOf(*extension->menuForMenuKind(kind)); }

    // Picks the entry of an action from the menu of a kind, as a file manager would.
    void pick(MenuKind kind, std::string_view action) {
        const auto menu = extension->menuForMenuKind(kind);
        for (const auto& item : menu->itemArray()) {
            if (item->action().name == action) {
                item->sendAction(*extension);
                return;
            }
        }
        ADD_FAILURE() << "no entry for " << action;
    }
    void setAccount(int trashCount) {
        const auto info = NS::make<QVUserInfoItem>();
        info->setPlan(NS::str("Personal"));
        info->setTrashCount(NS::Number::numberWithInt(trashCount));
        info->setStorageUsed(NS::Number::numberWithInt(1'234'567));
        info->setStorageMax(NS::Number::numberWithInt(5'120));
        extension->setStorageInfo(info);
    }
};

TEST_F(FinderMenu, HasTheDrivesNameForTitleWhateverItsKind) {
    selectOnDrive({"/a"});
    for (const MenuKind kind : {kItems, kContainer, kSidebar, kToolbar}) {
        EXPECT_EQ(extension->menuForMenuKind(kind)->title()->utf8(), "Fennmoor Cloud");
    }
}

TEST_F(FinderMenu, HasEntriesWithoutKeysAndTargets) {
    setAccount(1);
    selectOnDrive({"/a"});
    target("/Volumes/Drive");
    for (const MenuKind kind : {kItems, kContainer, kToolbar}) {
        const auto menu = extension->menuForMenuKind(kind);
        ASSERT_FALSE(menu->itemArray().empty());
        for (const auto& item : menu->itemArray()) {
            EXPECT_EQ(item->keyEquivalent()->utf8(), "");
            EXPECT_FALSE(item->target());
        }
    }
}

TEST_F(FinderMenu, CountsAnItemOffTheDriveAsSelected) {
    select({"/Volumes/Drive/a", "/home/b"});
    EXPECT_EQ(entries(kItems), Entries{kMove});
}

TEST_F(FinderMenu, OffersToShareAnItemOffTheDrive) {
    // Only the number of items counts here; its path goes to the host as nil.
    select({"/home/b"});
    EXPECT_EQ(entries(kItems), (Entries{kShare, kProperties}));
}

TEST_F(FinderMenu, RaisesForTheDriveItself) {
    selectOnDrive({""});
    for (const MenuKind kind : {kItems, kContainer, kSidebar}) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)extension->menuForMenuKind(kind); }),
                  NS::kRangeException);
    }
}

TEST_F(FinderMenu, DoesNotRaiseForTheDriveItselfInTheToolbar) {
    selectOnDrive({""});
    EXPECT_EQ(entries(kToolbar), Entries{"Empty Trash -> emptyTrash"});
}

TEST_F(FinderMenu, OfTheToolbarOnlyEmptiesTheTrashWithoutAccountAndTarget) {
    EXPECT_EQ(entries(kToolbar), Entries{"Empty Trash -> emptyTrash"});
}

TEST_F(FinderMenu, OfTheToolbarShowsTrashCountAndStorage) {
    setAccount(3);
    EXPECT_EQ(entries(kToolbar),
              (Entries{"Empty Trash (3) -> emptyTrash", kDashes, "[1.23 MB of 5.37 GB used]"}));
}

TEST_F(FinderMenu, OfTheToolbarShowsATrashCountOf0) {
    setAccount(0);
    EXPECT_EQ(entries(kToolbar).front(), "Empty Trash (0) -> emptyTrash");
}

TEST_F(FinderMenu, OfTheToolbarRefreshesATargetOnTheDrive) {
    target("/Volumes/Drive/Docs");
    EXPECT_EQ(entries(kToolbar),
              (Entries{"Empty Trash -> emptyTrash", kDashes, "Refresh Folder -> refreshFolder"}));
    target("/home");
    EXPECT_EQ(entries(kToolbar), Entries{"Empty Trash -> emptyTrash"});
}

TEST_F(FinderMenu, OfTheToolbarIsWholeWithAccountAndTarget) {
    setAccount(2);
    target("/Volumes/Drive");
    EXPECT_EQ(entries(kToolbar),
              (Entries{"Empty Trash (2) -> emptyTrash", kDashes, "Refresh Folder -> refreshFolder",
                       kDashes, "[1.23 MB of 5.37 GB used]"}));
}

TEST_F(FinderMenu, OfTheToolbarShowsTheRecordThatIsHeldAndAsksForTheNext) {
    setAccount(3);
    EXPECT_EQ(entries(kToolbar).front(), "Empty Trash (3) -> emptyTrash");
    EXPECT_FALSE(argumentOf("ext_req_userinfo", LinkRecorder::kNothing));
}

TEST_F(FinderMenu, OfTheToolbarRaisesForAnAccountThatIsNoRecord) {
    extension->setStorageInfo(NS::str("no record"));
    EXPECT_EQ(Tests::nameOfException([&] { (void)extension->menuForMenuKind(kToolbar); }),
              NS::kInvalidArgumentException);
}

TEST_F(FinderMenu, HasNoStorageLineWithoutAccount) {
    EXPECT_FALSE(extension->storageMenuItem());
    setAccount(0);
    const auto line = extension->storageMenuItem();
    ASSERT_TRUE(line);
    EXPECT_FALSE(line->isEnabled());
    EXPECT_EQ(line->action().name, "");
}

TEST_F(FinderMenu, SharesTheSelectedItem) {
    selectOnDrive({"/Docs/a"});
    pick(kItems, "shareItem:");
    EXPECT_EQ(textOf(argumentOf("ext_share")), "/Docs/a");
}

TEST_F(FinderMenu, SharesTheTargetWhenNothingIsSelected) {
    target("/Volumes/Drive/Docs");
    pick(kContainer, "shareItem:");
    EXPECT_EQ(textOf(argumentOf("ext_share")), "/Docs");
}

TEST_F(FinderMenu, SharesNilOffTheDrive) {
    select({"/home/b"});
    pick(kItems, "shareItem:");
    EXPECT_EQ(textOf(argumentOf("ext_share")), "(null)");
}

TEST_F(FinderMenu, ShowsThePropertiesOfTheSelectedItem) {
    selectOnDrive({"/Docs/a"});
    pick(kItems, "showProps");
    EXPECT_EQ(textOf(argumentOf("ext_show_props")), "/Docs/a");
}

TEST_F(FinderMenu, RefreshesTheTargetAndNotTheSelection) {
    selectOnDrive({"/Docs/a"});
    target("/Volumes/Drive/Docs");
    pick(kContainer, "refreshFolder");
    EXPECT_EQ(textOf(argumentOf("ext_refresh_folder")), "/Docs");
    pick(kToolbar, "refreshFolder");
    EXPECT_EQ(textOf(argumentOf("ext_refresh_folder")), "/Docs");
}

TEST_F(FinderMenu, MovesTheWholeSelectionToTheTrash) {
    select({"/Volumes/Drive/a", "/home/x", "/Volumes/Drive/b"});
    pick(kItems, "moveToTrash");
    EXPECT_EQ(textsOf(argumentOf("ext_movetotrash")), (Entries{"/a", "/b"}));
}

TEST_F(FinderMenu, RestoresTheWholeSelection) {
    selectOnDrive({"/Trash/a", "/Trash/b"});
    pick(kItems, "restore");
    EXPECT_EQ(textsOf(argumentOf("ext_trashrestore")), (Entries{"/Trash/a", "/Trash/b"}));
}

TEST_F(FinderMenu, DeletesTheWholeSelection) {
    selectOnDrive({"/Trash/a", "/Trash/b"});
    pick(kItems, "delete");
    EXPECT_EQ(textsOf(argumentOf("ext_trashdelete")), (Entries{"/Trash/a", "/Trash/b"}));
}

TEST_F(FinderMenu, SendsAnEmptyArrayForASelectionOffTheDrive) {
    select({"/home/x"});
    extension->moveToTrash();
    EXPECT_EQ(textsOf(argumentOf("ext_movetotrash")), Entries());
}

TEST_F(FinderMenu, EmptiesTheTrash) {
    pick(kToolbar, "emptyTrash");
    EXPECT_FALSE(argumentOf("ext_emptytrash", LinkRecorder::kNothing));
}

TEST_F(FinderMenu, SendsALargeSelectionAsOneRequest) {
    std::vector<std::string> paths;
    for (int i = 0; i < 100'000; ++i) {
        paths.push_back("/Docs/" + std::to_string(i));
    }
    selectOnDrive(paths);
    pick(kItems, "moveToTrash");
    EXPECT_EQ(textsOf(argumentOf("ext_movetotrash")), paths);
}

TEST_F(FinderMenu, BelongsToAToolbarItem) {
    EXPECT_EQ(textOf(extension->toolbarItemName()), "Fennmoor Cloud");
    EXPECT_EQ(textOf(extension->toolbarItemToolTip()), "Mounted at /Volumes/Drive");
    ASSERT_TRUE(extension->toolbarItemImage());
    EXPECT_EQ(textOf(extension->toolbarItemImage()->name()), "MainOnline");
}

TEST_F(FinderMenu, LeadsToTheDriveWithTheDesktopsOpener) {
    const auto opened = folders.root() / "opened";
    std::ofstream(folders.root() / "xdg-open")
        << "#!/bin/sh\nln -s \"$1\" '" << opened.string() << "'\n";
    std::filesystem::permissions(folders.root() / "xdg-open", std::filesystem::perms::owner_all);
    const Tests::ScopedVariable path("PATH", folders.root().string() + ":/usr/bin:/bin");
    extension->goToDrive();
    ASSERT_TRUE(pump([&] { return std::filesystem::is_symlink(opened); }));
    EXPECT_EQ(std::filesystem::read_symlink(opened), kDrive);
}

} // namespace
