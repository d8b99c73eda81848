#include "Shell/PublishedState.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Shell/Testing/SampleExtension.h"
#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

class PublishedState : public testing::Test {
  protected:
    using Names = std::vector<std::string>;

    PublishedState() {
        extension->setToolTip(NS::str("Here"));
        watch("/mnt/drive");
        state.emplace(extension, [this] { return std::vector{extension->record()}; });
    }
    ~PublishedState() override { controller->setDirectoryURLs(nullptr); }

    void watch(const char* path) {
        controller->setDirectoryURLs(
            NS::Set::setWithObject(NS::URL::fileURLWithPath(NS::str(path))));
    }
    Names changesAfterRefresh() {
        state->refresh();
        const auto changes = state->takeChanges();
        return {changes.begin(), changes.end()};
    }

    NS::Ref<FI::FinderSyncController> controller = FI::FinderSyncController::defaultController();
    NS::Ref<Tests::SampleExtension> extension = NS::make<Tests::SampleExtension>();
    std::optional<Shell::PublishedState> state;
};

TEST_F(PublishedState, IsReadWhenItIsMade) {
    EXPECT_EQ(state->watchedFolders(), Names{"file:///mnt/drive"});
    EXPECT_EQ(state->generation(), 1U);
    EXPECT_EQ(state->name(), "Sample Drive");
    EXPECT_EQ(state->toolTip(), "Here");
    EXPECT_EQ(state->imageName(), "SampleImage");
    EXPECT_EQ(state->imageFile(), "file:///icons/Sample%20Image.svg");
    EXPECT_EQ(changesAfterRefresh(), Names{});
}

TEST_F(PublishedState, IsEmptyWhereTheExtensionHasNothing) {
    controller->setDirectoryURLs(nullptr);
    const Shell::PublishedState empty(NS::make<FI::FinderSync>(),
                                      [] { return std::vector<NS::RefPtr<NS::Object>>(); });
    EXPECT_EQ(empty.watchedFolders(), Names{});
    EXPECT_EQ(empty.name() + empty.toolTip() + empty.imageName() + empty.imageFile(), "");
}

TEST_F(PublishedState, HasANewGenerationWhenARecordIsReplaced) {
    extension->setRecord(NS::str("one"));
    EXPECT_EQ(changesAfterRefresh(), Names{"Generation"});
    EXPECT_EQ(state->generation(), 2U);
    extension->setRecord(NS::str("one")); // another record, though an equal one
    EXPECT_EQ(changesAfterRefresh(), Names{"Generation"});
    EXPECT_EQ(state->generation(), 3U);
    EXPECT_EQ(changesAfterRefresh(), Names{});
}

TEST_F(PublishedState, TellsOfOtherWatchedFolders) {
    watch("/mnt/other");
    EXPECT_EQ(changesAfterRefresh(), (Names{"Generation", "WatchedFolders"}));
    EXPECT_EQ(state->watchedFolders(), Names{"file:///mnt/other"});
}

TEST_F(PublishedState, DoesNotTellOfTheSameFoldersSetAgain) {
    watch("/mnt/drive");
    EXPECT_EQ(changesAfterRefresh(), Names{"Generation"});
}

TEST_F(PublishedState, ReadsTheToolTipWithWhatItDependsOn) {
    extension->setToolTip(NS::str("There"));
    extension->setRecord(extension->toolTip());
    EXPECT_EQ(changesAfterRefresh(), (Names{"Generation", "ToolbarItemToolTip"}));
    EXPECT_EQ(state->toolTip(), "There");
}

TEST_F(PublishedState, TellsThatTheHostAnswersAgain) {
    NS::RefPtr<NS::Object> record;
    state.emplace(
        extension, [this] { return std::vector{extension->record()}; },
        Shell::Host{nullptr, [&] {
                        return record;
                    }});
    ASSERT_TRUE(state->nextLook());
    const auto moment = *state->nextLook();
    EXPECT_TRUE(Tests::waitUntil([&] {
        state->refresh();
        return !state->hostAnswers();
    }));
    EXPECT_GE(Shell::HostAnswers::Clock::now(), moment);
    EXPECT_EQ(changesAfterRefresh(), Names{"HostAnswers"});
    record = NS::str("record");
    EXPECT_EQ(changesAfterRefresh(), Names{"HostAnswers"});
    EXPECT_TRUE(state->hostAnswers());
}

TEST_F(PublishedState, GathersChangesUntilTheyAreTaken) {
    extension->setRecord(NS::str("one"));
    state->refresh();
    watch("/mnt/other");
    state->refresh();
    EXPECT_EQ(changesAfterRefresh(), (Names{"Generation", "WatchedFolders"}));
    EXPECT_EQ(state->generation(), 3U);
}

} // namespace
