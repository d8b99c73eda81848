#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVFinderExtension/Testing/SelectionFixture.h"

namespace {

using Tests::LinkRecorder;
using TrashStatus = FinderSync::TrashStatus;

class RelativePath : public Tests::SelectionTest {
  protected:
    std::string relative(std::string_view path) const {
        return textOf(extension->relativePathFrom(NS::String::fromFileSystemRepresentation(path)));
    }
};

TEST_F(RelativePath, IsASlashForTheDriveItself) {
    EXPECT_EQ(relative("/Volumes/Drive"), "/");
}

TEST_F(RelativePath, IsWhatFollowsTheMountPath) {
    EXPECT_EQ(relative("/Volumes/Drive/x"), "/x");
    EXPECT_EQ(relative("/Volumes/Drive/Docs/a b.txt"), "/Docs/a b.txt");
}

TEST_F(RelativePath, IsNilOffTheDrive) {
    EXPECT_EQ(relative("/Volumes/Other/x"), "(null)");
    EXPECT_EQ(relative("/Volumes/Driv"), "(null)");
    EXPECT_EQ(relative("/volumes/drive/x"), "(null)");
    EXPECT_EQ(relative(""), "(null)");
    EXPECT_FALSE(extension->relativePathFrom(nullptr));
}

TEST_F(RelativePath, ComparesTextAndNotFolders) {
    EXPECT_EQ(relative("/Volumes/DriveX/a"), "X/a");
    EXPECT_EQ(relative("/Volumes/Drive2"), "2");
}

TEST_F(RelativePath, KeepsSlashesAndDotsAsTheyStand) {
    EXPECT_EQ(relative("/Volumes/Drive/x/"), "/x/");
    EXPECT_EQ(relative("/Volumes/Drive/"), "/");
    EXPECT_EQ(relative("/Volumes/Drive//a/../b"), "//a/../b");
}

TEST_F(RelativePath, KeepsTheBytesOfOddNames) {
    for (const char* const name : {"/e\u0301", "/\u00e9", "/\U0001F600", "/a\nb", "/100%", "/a:b",
                                   "/\"'", "/\xFF\xC3", "/ "}) {
        EXPECT_EQ(relative(std::string("/Volumes/Drive") + name), name);
    }
}

TEST_F(RelativePath, LosesItsFirstSlashWhenTheMountPathEndsWithOne) {
    extension->setDrivePath(NS::str("/Volumes/Drive/"));
    EXPECT_EQ(relative("/Volumes/Drive/x"), "x");
}

class Selection : public Tests::SelectionTest {
  protected:
    std::vector<std::string> relative() const {
        return textsOf(extension->relativeSelectionArray());
    }
    // Whether an item is on a drive, and where on it; null when it is not.
    void expectOnDrive(const char* drive, const std::string& path, const char* expected) const {
        extension->setDrivePath(NS::String::fromFileSystemRepresentation(drive));
        std::vector<std::string> paths;
        if (expected != nullptr) {
            paths.emplace_back(expected);
        }
        select({path});
        EXPECT_EQ(relative(), paths) << drive;
        selectPaths({path});
        EXPECT_EQ(relative(), paths) << drive;
    }
};

TEST_F(Selection, IsEmptyWhenNothingIsSelected) {
    EXPECT_EQ(relative(), std::vector<std::string>());
    controller()->setSelectedItemURLs(nullptr);
    EXPECT_EQ(relative(), std::vector<std::string>());
}

TEST_F(Selection, LeavesOutItemsOffTheDriveAndKeepsTheOrder) {
    select({"/Volumes/Drive/b", "/home/a", "/Volumes/Drive/a"});
    EXPECT_EQ(relative(), (std::vector<std::string>{"/b", "/a"}));
}

TEST_F(Selection, GivesItsFirstPathElseTheTargets) {
    target("/Volumes/Drive/Docs");
    EXPECT_EQ(textOf(extension->pathFromSelectionOrTarget()), "/Volumes/Drive/Docs");
    select({"/home/first", "/Volumes/Drive/second"});
    EXPECT_EQ(textOf(extension->pathFromSelectionOrTarget()), "/home/first");
}

TEST_F(Selection, GivesNoPathWithoutSelectionAndTarget) {
    EXPECT_FALSE(extension->pathFromSelectionOrTarget());
    EXPECT_FALSE(extension->pathFromTarget());
}

TEST_F(Selection, HasATargetOnTheDriveWhenItsPathBeginsLikeTheMountPath) {
    EXPECT_FALSE(extension->isTargetOnDrive());
    for (const char* const path : {"/Volumes/Drive", "/Volumes/Drive/Docs", "/Volumes/DriveX"}) {
        target(path);
        EXPECT_TRUE(extension->isTargetOnDrive()) << path;
    }
    target("/Volumes");
    EXPECT_FALSE(extension->isTargetOnDrive());
    EXPECT_EQ(textOf(extension->pathFromTarget()), "/Volumes");
}

TEST_F(Selection, IsTheSameAsPaths) {
    selectPaths({"/Volumes/Drive/b", "/home/a", "/Volumes/Drive/\xFF\xC3", "/Volumes/DriveX/c/"});
    EXPECT_EQ(relative(), (std::vector<std::string>{"/b", "/\xFF\xC3", "X/c"}));
    EXPECT_EQ(textOf(extension->pathFromSelectionOrTarget()), "/Volumes/Drive/b");
    EXPECT_FALSE(extension->isSpecialFolderSelected());
    selectPaths({"/Volumes/Drive/a", "/Volumes/Drive/Shared Folders"});
    EXPECT_TRUE(extension->isSpecialFolderSelected());
    selectPaths({"/Volumes/Drive/"});
    EXPECT_EQ(relative(), std::vector<std::string>{"/"});
}

// Texts begin alike when their characters do, and not some of their bytes.
TEST_F(Selection, ComparesCharactersWithAMountPathOfAnyBytes) {
    expectOnDrive("/mnt/\xC3\xA9", "/mnt/\xC3\xA9/a", "/a");
    expectOnDrive("/mnt/\xC3\xA9", "/mnt/\xC3\xA8/a", nullptr);
    expectOnDrive("/mnt/\xFF", "/mnt/\xFF/a", "/a");
    expectOnDrive("/mnt/\xFF", "/mnt/\xFE/a", nullptr);
    expectOnDrive("/mnt/\xC3", "/mnt/\xC3/a", "/a");
    expectOnDrive("/mnt/\xC3", "/mnt/\xC3\xA9/a", nullptr);
    expectOnDrive("/mnt/\xED\xA0\x80", "/mnt/\xED\xA0\x80/a", "/a");
}

TEST_F(Selection, TakesNoReplacementForACharacterOfTheMountPath) {
    constexpr char16_t kLoneSurrogate[] = {u'/', 0xD800};
    extension->setDrivePath(NS::String::fromUtf16({kLoneSurrogate, 2}));
    selectPaths({"/\xEF\xBF\xBD/a"});
    EXPECT_EQ(relative(), std::vector<std::string>());
}

struct TrashCase {
    const char* name;
    std::vector<std::string> items;
    TrashStatus status;
};

class TrashStatusTable : public Tests::SelectionTest,
                         public testing::WithParamInterface<TrashCase> {};

TEST_P(TrashStatusTable, ClassifiesTheSelection) {
    selectOnDrive(GetParam().items);
    EXPECT_EQ(extension->trashStatusSelection(), GetParam().status);
    selectPathsOnDrive(GetParam().items);
    EXPECT_EQ(extension->trashStatusSelection(), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    Selection, TrashStatusTable,
    testing::Values(
        TrashCase{
            "Empty", {},
             TrashStatus::kNone
},
        TrashCase{"OnlyInside", {"/Trash/a", "/Trash/b/c"}, TrashStatus::kInTrash},
        TrashCase{"OnlyOutside", {"/a", "/Docs/b"}, TrashStatus::kOutsideTrash},
        TrashCase{"InsideThenOutside", {"/Trash/a", "/b"}, TrashStatus::kNone},
        TrashCase{"OutsideThenInside", {"/b", "/Trash/a"}, TrashStatus::kNone},
        TrashCase{"TrashAlone", {"/Trash"}, TrashStatus::kNone},
        TrashCase{"TrashThenOutside", {"/Trash", "/a"}, TrashStatus::kOutsideTrash},
        TrashCase{"OutsideThenTrash", {"/a", "/Trash"}, TrashStatus::kNone},
        TrashCase{"InsideTrashOutside", {"/Trash/a", "/Trash", "/b"}, TrashStatus::kOutsideTrash},
        TrashCase{"OutsideTrashInside", {"/b", "/Trash", "/Trash/a"}, TrashStatus::kInTrash},
        // The first mix ends it, whatever follows.
        TrashCase{
            "MixThenTrashThenOutside", {"/a", "/Trash/b", "/Trash", "/c"}, TrashStatus::kNone},
        TrashCase{"DriveAlone", {""}, TrashStatus::kOutsideTrash},
        TrashCase{"DriveThenInside", {"", "/Trash/a"}, TrashStatus::kNone},
        TrashCase{"TrashWithoutCapital", {"/trash/a"}, TrashStatus::kOutsideTrash},
        TrashCase{"TrashFurtherDown", {"/Docs/Trash/a"}, TrashStatus::kOutsideTrash},
        TrashCase{"NameBeginsLikeTrash", {"/Trash2/a"}, TrashStatus::kOutsideTrash},
        TrashCase{"InsideTrashInside",
                  {"/Trash/a", "/Trash/b", "/Trash", "/Trash/c"},
                  TrashStatus::kInTrash},
        TrashCase{"ManyInsideThenNameBeginsLikeTrash",
                  {"/Trash/a", "/Trash/b", "/Trashed/c"},
                  TrashStatus::kNone},
        TrashCase{"ManyOutsideThenInside", {"/a", "/b", "/c", "/Trash/d"}, TrashStatus::kNone},
        TrashCase{"ManyOutsideThenTrash", {"/a", "/b", "/Trash"}, TrashStatus::kNone},
        TrashCase{
            "SharedFoldersAndOthers", {"/Shared Folders/a", "/b"}, TrashStatus::kOutsideTrash},
        TrashCase{"SharedFoldersAndInside", {"/Shared Folders", "/Trash/b"}, TrashStatus::kNone},
        TrashCase{"RepeatedSlashes", {"//Trash//a", "/Trash/b"}, TrashStatus::kInTrash},
        TrashCase{"TrashWithRepeatedSlashes", {"/Trash/a", "//Trash"}, TrashStatus::kNone},
        // Without its slash the path has one component less: "Trash" is the second here.
        TrashCase{"SiblingOfTheDrive", {"X/Trash/a"}, TrashStatus::kInTrash}),
    [](const auto& test) { return test.param.name; });

TEST_F(Selection, TakesTheNumbersOfTrashStatusFromTheTable) {
    EXPECT_EQ(static_cast<int>(TrashStatus::kNone), 0);
    EXPECT_EQ(static_cast<int>(TrashStatus::kInTrash), 1);
    EXPECT_EQ(static_cast<int>(TrashStatus::kOutsideTrash), 2);
}

TEST_F(Selection, CountsItemsOffTheDriveForNothingInItsTrashStatus) {
    select({"/Volumes/Drive/Trash/a", "/home/b"});
    EXPECT_EQ(extension->trashStatusSelection(), TrashStatus::kInTrash);
}

TEST_F(Selection, IsSpecialInTheSpecialFoldersOnly) {
    for (const char* const path :
         {"/Trash", "/Trash/a", "/Shared Folders", "/Shared Folders/x/y"}) {
        selectOnDrive({path});
        EXPECT_TRUE(extension->isSpecialFolderSelected()) << path;
    }
    for (const char* const path : {"/Documents", "/trash", "/Shared folders", "/Trash ", "/a/Trash",
                                   "/T", "/Tra/sh", "/Shared", "/Shared Folders2/a"}) {
        selectOnDrive({path});
        EXPECT_FALSE(extension->isSpecialFolderSelected()) << path;
    }
}

TEST_F(Selection, IsNotSpecialWithoutItemsOnTheDrive) {
    EXPECT_FALSE(extension->isSpecialFolderSelected());
    select({"/home/Trash"});
    EXPECT_FALSE(extension->isSpecialFolderSelected());
}

TEST_F(Selection, IsSpecialWhenOneOfItsItemsIs) {
    selectOnDrive({"/a", "/Shared Folders/b", "/c"});
    EXPECT_TRUE(extension->isSpecialFolderSelected());
}

TEST_F(Selection, IsSpecialAlsoBehindManyOthers) {
    selectPathsOnDrive({"/a/b", "/a/c", "/Shared Folders/b", "/a/d"});
    EXPECT_TRUE(extension->isSpecialFolderSelected());
    selectPathsOnDrive({"/a/b", "/a/c", "/a/Trash", "/a/Shared Folders/x"});
    EXPECT_FALSE(extension->isSpecialFolderSelected());
}

TEST_F(Selection, RaisesForTheDriveItselfAlsoBehindManyOthers) {
    selectPathsOnDrive({"/a/b", "/a/c", ""});
    EXPECT_EQ(Tests::nameOfException([&] { (void)extension->isSpecialFolderSelected(); }),
              NS::kRangeException);
}

// "/Volumes/DriveX" is on the drive as "X", which has no second component either.
TEST_F(Selection, RaisesForANeighbourOfTheDriveToo) {
    selectOnDrive({"X"});
    EXPECT_EQ(Tests::nameOfException([&] { (void)extension->isSpecialFolderSelected(); }),
              NS::kRangeException);
    EXPECT_EQ(extension->trashStatusSelection(), TrashStatus::kOutsideTrash);
}

TEST_F(Selection, RaisesForTheDriveItself) {
    selectOnDrive({"/a", ""});
    EXPECT_EQ(Tests::nameOfException([&] { (void)extension->isSpecialFolderSelected(); }),
              NS::kRangeException);
}

TEST_F(Selection, IsSpecialBeforeItComesToTheDriveItself) {
    selectOnDrive({"/Trash", ""});
    EXPECT_TRUE(extension->isSpecialFolderSelected());
}

class ObservedFolder : public Tests::SelectionTest {
  protected:
    std::string begun(const char* path) {
        extension->beginObservingDirectoryAtURL(urlOf(path));
        return textOf(argumentOf("ext_obs_beg", LinkRecorder::kReceivedFrom));
    }
};

TEST_F(ObservedFolder, IsReportedByItsPathOnTheDrive) {
    EXPECT_EQ(begun("/Volumes/Drive"), "/");
    EXPECT_EQ(begun("/Volumes/Drive/Docs"), "/Docs");
}

TEST_F(ObservedFolder, IsReportedAsNilOffTheDrive) {
    EXPECT_EQ(begun("/Volumes/Other"), "(null)");
}

TEST_F(ObservedFolder, IsReportedWhenItIsNoLongerShown) {
    extension->endObservingDirectoryAtURL(urlOf("/Volumes/Drive/Docs"));
    EXPECT_EQ(textOf(argumentOf("ext_obs_end", LinkRecorder::kReceivedFrom)), "/Docs");
    extension->endObservingDirectoryAtURL(urlOf("/Volumes/Other"));
    EXPECT_EQ(textOf(argumentOf("ext_obs_end", LinkRecorder::kReceivedFrom)), "(null)");
}

} // namespace
