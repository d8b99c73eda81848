#include "FileManagers/CloudProvider/AccountState.h"

#include "FileManagers/Shared/Testing/DriveFixture.h"

#include <filesystem>
#include <fstream>

namespace {

using FileManagers::AccountState;
using FileManagers::Look;
using Entries = std::vector<Shell::MenuEntry>;
using Status = AccountState::Status;

const Shell::MenuEntry kHostLine{"The host has not answered", "", false};

class AccountStates : public Tests::DriveTest {
  protected:
    std::optional<AccountState> state(Look look = Look::kKept) {
        return FileManagers::accountState(*drive, look);
    }
    const Entries fakeEntries{
        {"Do It", "doIt:", true },
        {"Told",  "",      false}
    };
};

TEST_F(AccountStates, IsNoneWithoutAnExtension) {
    drive.emplace(times);
    EXPECT_EQ(state(), std::nullopt);
}

TEST_F(AccountStates, SaysThatTheHostHasNotAnsweredBeforeThereIsADrive) {
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->wait();
    drive.emplace(times);
    ASSERT_TRUE(pump([&] { return state().has_value(); }));
    EXPECT_EQ(*state(), (AccountState{"Fennmoor Cloud", "", "MainOnline-symbolic", Status::kWaiting,
                                      kHostLine.title, Entries{kHostLine}}));
}

TEST_F(AccountStates, IsTheDriveWithTheToolbarsMenuForItsFolder) {
    start();
    EXPECT_EQ(*state(), (AccountState{"Fake Drive", "/mnt/Drive", "FakeImage-symbolic",
                                      Status::kIdle, "Fake tip", fakeEntries}));
    EXPECT_EQ(asked(), Titles{"MenuOfPaths 3 [] /mnt/Drive"});
}

TEST_F(AccountStates, AsksAnewForAMenuThatIsOpened) {
    start();
    EXPECT_EQ(state(Look::kKept), state(Look::kKept));
    EXPECT_EQ(asked().size(), 1U);
    EXPECT_EQ(state(Look::kAfresh), state(Look::kAfresh));
    EXPECT_EQ(asked().size(), 3U);
}

TEST_F(AccountStates, SaysBelowTheMenuThatTheHostHasNotAnswered) {
    start();
    extension->changeHostAnswers(false);
    ASSERT_TRUE(pump([&] { return !drive->hostAnswers(); }));
    const auto now = state();
    EXPECT_EQ(now->status, Status::kFailing);
    EXPECT_EQ(now->details, kHostLine.title);
    EXPECT_EQ(now->entries, (Entries{fakeEntries[0], fakeEntries[1], kHostLine}));
}

TEST_F(AccountStates, SaysThatTheExtensionDoesNotAnswer) {
    times = {std::chrono::milliseconds(50), std::chrono::seconds(0)};
    start();
    ASSERT_TRUE(pump([&] { return state()->entries == fakeEntries; }));
    extension->keepCalls();
    const auto now = state(Look::kAfresh);
    EXPECT_EQ(now->status, Status::kFailing);
    EXPECT_EQ(now->details, "Fake Drive does not answer");
    EXPECT_EQ(now->entries,
              (Entries{
                  fakeEntries[0], fakeEntries[1], {"Fake Drive does not answer", "", false}
    }));
}

TEST_F(AccountStates, HasTheSymbolicIconBesideAnImageInATheme) {
    const auto theme = folders.root() / "hicolor";
    for (const char* const kind : {"scalable", "symbolic"}) {
        std::filesystem::create_directories(theme / kind / "apps");
    }
    const auto symbolic = theme / "symbolic/apps/FakeImage-symbolic.svg";
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->setImageFile("file://" + (theme / "scalable/apps/FakeImage.svg").string());
    extension->appear();
    connect("/mnt/Drive");
    EXPECT_EQ(state()->icon, "FakeImage-symbolic");
    std::ofstream(symbolic) << "<svg/>";
    EXPECT_EQ(state()->icon, symbolic.string());
}

} // namespace
