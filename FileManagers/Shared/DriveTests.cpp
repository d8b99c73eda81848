#include "FileManagers/Shared/Drive.h"

#include "FileManagers/Shared/Testing/DriveFixture.h"

namespace {

using namespace std::chrono_literals;
using Shell::MenuKind;
using Titles = std::vector<std::string>;

// What a plug-in gets of an extension that watches "/mnt/Drive".
class Drive : public Tests::DriveTest {
  protected:
    void SetUp() override { start(); }
};

// The same from before there is one.
class DriveFromTheStart : public Tests::DriveTest {};

// The same with an extension that is late for every answer.
class DriveOfOneThatIsLate : public Tests::DriveTest {
  protected:
    void SetUp() override {
        times.patience = 20ms;
        start();
        extension->keepCalls();
    }
    // It takes in messages, as the drive is told after each that it was late for.
    void beLate(int turns) {
        for (int i = 1; i <= turns; ++i) {
            EXPECT_EQ(titles(MenuKind::kItems, item), Titles{});
            EXPECT_TRUE(pump([&] { return changes == i; }));
        }
    }
};

// It is left in peace for a time that a test can wait for.
class DriveOfOneThatIsLateForAWhile : public DriveOfOneThatIsLate {
  protected:
    void SetUp() override {
        times.firstPause = 300ms; // longer than it takes to learn that it is back
        DriveOfOneThatIsLate::SetUp();
    }
};

TEST_F(Drive, HasTheEntriesOfASelection) {
    EXPECT_EQ(titles(MenuKind::kItems, item), (Titles{"Do It", "[Told]"}));
    EXPECT_EQ(asked(), Titles{"MenuOfPaths 0 [/mnt/Drive/a] /mnt/Drive"});
}

TEST_F(Drive, AsksOnceForASelection) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(titles(MenuKind::kItems, item).size(), 2U);
        EXPECT_EQ(titles(MenuKind::kContainer, folder).size(), 2U);
    }
    EXPECT_EQ(asked().size(), 2U);
}

TEST_F(Drive, AsksAgainInANewGeneration) {
    titles(MenuKind::kItems, item);
    extension->setMenu({"Other", {{"Other", "other", true}}});
    extension->changeGeneration();
    EXPECT_TRUE(pump([&] { return changes == 1; }));
    EXPECT_EQ(titles(MenuKind::kItems, item), Titles{"Other"});
    EXPECT_EQ(asked().size(), 2U);
}

TEST_F(Drive, AsksNothingOutsideOfTheWatchedFolders) {
    EXPECT_EQ(titles(MenuKind::kItems, {{"/home/a"}, "/home"}), Titles{});
    EXPECT_EQ(titles(MenuKind::kContainer, {{}, "/mnt/Drive2"}), Titles{});
    EXPECT_EQ(titles(MenuKind::kSidebar, {{"/mnt/Drive"}, ""}), Titles{});
    EXPECT_EQ(titles(MenuKind::kToolbar, {{}, "/home"}), Titles{});
    EXPECT_EQ(asked(), Titles{});
}

TEST_F(Drive, IsWhereTheWatchedFoldersAre) {
    EXPECT_TRUE(drive->isOnDrive("/mnt/Drive"));
    EXPECT_TRUE(drive->isOnDrive("/mnt/Drive/a/b"));
    EXPECT_FALSE(drive->isOnDrive("/mnt"));
    EXPECT_FALSE(drive->isOnDrive(""));
    EXPECT_EQ(drive->toolbarItem().name, "Fake Drive");
}

TEST_F(Drive, HasNothingWhileTheExtensionIsAway) {
    titles(MenuKind::kToolbar, folder);
    extension.reset();
    EXPECT_TRUE(pump([&] { return !drive->isOnDrive("/mnt/Drive"); }));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(titles(MenuKind::kItems, item), Titles{});
    EXPECT_EQ(titles(MenuKind::kToolbar, folder), Titles{});
    start();
    EXPECT_EQ(titles(MenuKind::kItems, item).size(), 2U);
}

TEST_F(Drive, AsksAfreshForAMenuThatWasClickedFor) {
    EXPECT_EQ(clicked(MenuKind::kToolbar, folder).size(), 2U);
    EXPECT_EQ(clicked(MenuKind::kToolbar, folder).size(), 2U);
    EXPECT_EQ(asked().size(), 2U);
    EXPECT_EQ(told, Titles{});
}

TEST_F(Drive, TellsWhyAClickShowsNothing) {
    EXPECT_EQ(clicked(MenuKind::kToolbar, {{}, "/home"}), Titles{});
    EXPECT_EQ(told, Titles{"“Fake Drive” could not be carried out: This is no longer possible "
                           "here. Nothing was done."});
    EXPECT_EQ(asked(), Titles{});
}

TEST_F(Drive, CarriesOutWhatWasPicked) {
    drive->pick(MenuKind::kItems, {"Do It", "doIt:", true}, item);
    EXPECT_EQ(asked(), Titles{"RunOnPaths 0 doIt: [/mnt/Drive/a] /mnt/Drive later"});
    EXPECT_EQ(told, Titles{});
}

TEST_F(Drive, TellsWhatWasRefused) {
    extension->refuseWith("com.Quorvane.Quorvane.QVFinderExtension.Error.NotInMenu", "none");
    drive->pick(MenuKind::kItems, {"Do It", "doIt:", true}, item);
    EXPECT_EQ(told, Titles{"“Do It” could not be carried out: This is no longer possible here. "
                           "Nothing was done."});
}

TEST_F(Drive, TellsByItsNameThatTheExtensionHasGone) {
    extension.reset();
    EXPECT_TRUE(pump([&] { return !drive->isOnDrive("/mnt/Drive"); }));
    drive->pick(MenuKind::kItems, {"Do It", "doIt:", true}, item);
    EXPECT_EQ(told, Titles{"“Do It” could not be carried out: Fake Drive is not running."});
}

TEST_F(Drive, AsksOnceForWhatFails) {
    extension->refuseWith("com.Quorvane.Quorvane.QVFinderExtension.Error.Raised", "no: reason");
    EXPECT_EQ(titles(MenuKind::kItems, item), Titles{});
    EXPECT_EQ(titles(MenuKind::kItems, item), Titles{});
    EXPECT_EQ(asked().size(), 1U);
}

TEST_F(DriveOfOneThatIsLate, AsksOnceMoreAndThenLeavesItInPeace) {
    beLate(2);
    EXPECT_EQ(titles(MenuKind::kItems, item), Titles{});
    EXPECT_EQ(clicked(MenuKind::kItems, item), Titles{});
    EXPECT_EQ(asked().size(), 2U);
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(DriveOfOneThatIsLateForAWhile, TellsWhenItAsksAgain) {
    Titles shown = titles(MenuKind::kItems, item);
    int seen = 0;
    const auto asFileManagersDo = [&] {
        if (seen != changes) {
            seen = changes;
            shown = titles(MenuKind::kItems, item);
        }
        if (asked().size() == 2) {
            extension->answerKept(); // both came too late
        }
        return !shown.empty();
    };
    EXPECT_TRUE(pump(asFileManagersDo));
}

TEST_F(DriveOfOneThatIsLate, AsksAnotherOneAtOnce) {
    beLate(2);
    extension.reset();
    EXPECT_TRUE(pump([&] { return !drive->isOnDrive("/mnt/Drive"); }));
    start();
    titles(MenuKind::kItems, item);
    EXPECT_TRUE(extension->waitForCalls(1));
}

TEST_F(DriveFromTheStart, IsAwayThenWaitsForItsHostThenIsThere) {
    using Presence = FileManagers::Drive::Presence;
    drive.emplace(times);
    EXPECT_EQ(drive->presence(), Presence::kAway);
    extension.emplace(Titles{"file:///mnt/Drive", "file:///mnt/Other"});
    extension->wait();
    EXPECT_TRUE(pump([&] { return drive->presence() == Presence::kWaiting; }));
    EXPECT_EQ(drive->folder(), "");
    extension->appear();
    EXPECT_TRUE(pump([&] { return drive->presence() == Presence::kThere; }));
    EXPECT_TRUE(drive->folder() == "/mnt/Drive" || drive->folder() == "/mnt/Other");
}

TEST_F(Drive, TellsThatItsHostDoesNotAnswer) {
    start();
    EXPECT_TRUE(drive->hostAnswers());
    extension->changeHostAnswers(false);
    EXPECT_TRUE(pump([&] { return !drive->hostAnswers(); }));
    EXPECT_GE(changes, 1);
}

TEST_F(Drive, AsksAfreshForAMenuThatIsOpened) {
    start();
    EXPECT_EQ(titles(MenuKind::kToolbar, folder), (Titles{"Do It", "[Told]"}));
    extension->setMenu({"Fake", {{"Other", "other", true}}});
    EXPECT_EQ(titles(MenuKind::kToolbar, folder), (Titles{"Do It", "[Told]"}));
    EXPECT_EQ(titlesOf(drive->freshEntries(MenuKind::kToolbar, folder)), Titles{"Other"});
    EXPECT_EQ(titles(MenuKind::kToolbar, folder), Titles{"Other"});
    EXPECT_EQ(asked().size(), 2U);
}

TEST_F(DriveFromTheStart, HasTheKeptEntriesForAMenuThatIsOpenedWhereNoneCanBeAsked) {
    times = {50ms, 0s};
    start();
    EXPECT_TRUE(pump([&] {
        return titles(MenuKind::kToolbar, folder) == Titles{"Do It", "[Told]"};
    }));
    extension->keepCalls();
    const auto fresh = [&] {
        return titlesOf(drive->freshEntries(MenuKind::kToolbar, folder));
    };
    EXPECT_EQ(fresh(), (Titles{"Do It", "[Told]"}));
    EXPECT_FALSE(drive->isAnswering());
    EXPECT_EQ(fresh(), (Titles{"Do It", "[Told]"}));
    EXPECT_EQ(told, Titles{});
}

TEST_F(Drive, TellsTheExtensionWhichFoldersAreShown) {
    drive->show(this, {"/mnt/Drive/a"});
    EXPECT_TRUE(extension->waitForCalls(1));
    drive->close(this);
    EXPECT_TRUE(extension->waitForCalls(2));
    EXPECT_EQ(asked(), (Titles{"BeginObserving file:///mnt/Drive/a true",
                               "EndObserving file:///mnt/Drive/a"}));
}

TEST(Mnemonics, AreDoubledToBeShown) {
    EXPECT_EQ(FileManagers::withoutMnemonics("a_b & c_", '_'), "a__b & c__");
    EXPECT_EQ(FileManagers::withoutMnemonics("a_b & c_", '&'), "a_b && c_");
}

} // namespace
