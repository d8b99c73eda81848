#include "FileManagers/Shared/ShownViews.h"

#include "Shell/Client/Testing/ClientFixture.h"

namespace {

// Two views of a file manager, and what an extension hears of them.
class ShownViews : public Tests::ClientTest {
  protected:
    using Calls = std::vector<std::string>;

    void SetUp() override {
        start();
        views.emplace(*client);
    }
    Calls heard() {
        EXPECT_EQ(client->settle(kLong), Shell::Outcome::kDone);
        return extension->calls();
    }

    const int view = 0;
    const int other = 0;
    std::optional<FileManagers::ShownViews> views;
};

TEST_F(ShownViews, BeginAndEndAFolder) {
    views->show(&view, {"/mnt/Drive/a"});
    EXPECT_EQ(heard(), Calls{"BeginObserving file:///mnt/Drive/a true"});
    views->close(&view);
    EXPECT_EQ(heard().back(), "EndObserving file:///mnt/Drive/a");
    EXPECT_EQ(heard().size(), 2U);
}

TEST_F(ShownViews, TellOneFolderOfSeveralViewsOnce) {
    views->show(&view, {"/mnt/Drive/a", "/mnt/Drive/a"});
    views->show(&other, {"/mnt/Drive/a"});
    views->close(&view);
    EXPECT_EQ(heard().size(), 1U);
    views->close(&other);
    EXPECT_EQ(heard().size(), 2U);
}

TEST_F(ShownViews, TellOnlyWhatIsOtherThanBefore) {
    views->show(&view, {"/mnt/Drive/a", "/mnt/Drive/b"});
    views->show(&view, {"/mnt/Drive/b", "/mnt/Drive/c"});
    EXPECT_EQ(
        heard(),
        (Calls{"BeginObserving file:///mnt/Drive/a true", "BeginObserving file:///mnt/Drive/b true",
               "BeginObserving file:///mnt/Drive/c true", "EndObserving file:///mnt/Drive/a"}));
}

TEST_F(ShownViews, SayNothingOfOtherFolders) {
    views->show(&view, {"/home", "/mnt/Drive2"});
    views->close(&view);
    views->close(&other);
    EXPECT_EQ(heard(), Calls{});
}

TEST_F(ShownViews, TellAnExtensionThatComesLater) {
    views->show(&view, {"/mnt/Drive/a"});
    extension.emplace(Calls{kDrive});
    extension->appear();
    EXPECT_TRUE(pump([&] { return client->isPresent() && !extension->calls().empty(); }));
    EXPECT_EQ(extension->calls(), Calls{"BeginObserving file:///mnt/Drive/a true"});
}

} // namespace
