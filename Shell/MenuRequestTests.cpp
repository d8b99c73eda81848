#include "Shell/MenuRequest.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "Shell/FileURL.h"
#include "Shell/Testing/SampleExtension.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class MenuRequest : public testing::Test {
  protected:
    using Calls = std::vector<std::string>;

    MenuRequest() {
        request.kind = FI::MenuKind::kContextualMenuForSidebar;
        request.selection =
            FI::Selection::selectionWithURLs(NS::Array::arrayWithObjects({url("/a"), url("/b")}));
        request.target = url("/");
    }
    static NS::Ref<NS::URL> url(const std::string& path) {
        return NS::Ref<NS::URL>(*Shell::fileURLFromText("file://" + path));
    }
    bool run(const char* action, bool tooLate = false) {
        return Shell::runEntryOfMenu(extension, request, action, [&] { return tooLate; }) ==
               Shell::RunResult::kDone;
    }
    void expectNothingIsShown() {
        EXPECT_FALSE(controller->selectedItemURLs());
        EXPECT_FALSE(controller->targetedURL());
    }

    NS::Ref<FI::FinderSyncController> controller = FI::FinderSyncController::defaultController();
    NS::Ref<Tests::SampleExtension> extension = NS::make<Tests::SampleExtension>();
    Shell::MenuRequest request;
};

TEST_F(MenuRequest, ShowsItsPlaceForTheTimeOfTheMenu) {
    const auto menu = Shell::menuForRequest(extension, request);
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->title()->utf8(), "Sample");
    EXPECT_EQ(extension->calls, Calls{"menu 2 /a /b > /"});
    expectNothingIsShown();
}

TEST_F(MenuRequest, LeavesNothingShownByAMenuThatRaises) {
    request.selection = FI::Selection::selectionWithURLs(
        NS::Array::arrayWithObjects({url(Tests::SampleExtension::kRaising)}));
    EXPECT_EQ(Tests::nameOfException([&] { (void)Shell::menuForRequest(extension, request); }),
              NS::kRangeException);
    expectNothingIsShown();
}

TEST_F(MenuRequest, RunsAnEntryOfAFreshMenuWhileItsPlaceIsShown) {
    EXPECT_TRUE(run("first"));
    EXPECT_EQ(extension->calls, (Calls{"menu 2 /a /b > /", "first /a /b > /"}));
    expectNothingIsShown();
}

TEST_F(MenuRequest, GivesTheEntryToAnActionThatTakesASender) {
    EXPECT_TRUE(run("withSender:"));
    EXPECT_EQ(extension->calls.back(), "withSender With Sender /a /b > /");
}

TEST_F(MenuRequest, RunsNothingWhenMakingTheMenuTookTooLong) {
    EXPECT_FALSE(run("first", true));
    EXPECT_EQ(extension->calls, Calls{"menu 2 /a /b > /"});
}

TEST_F(MenuRequest, RunsNothingThatTheMenuDoesNotOffer) {
    for (const char* const action : {"off", "withSender", "first:", "First", "unknown", ""}) {
        EXPECT_FALSE(run(action)) << action;
    }
    extension->hasMenu = false;
    EXPECT_FALSE(run("first"));
    EXPECT_EQ(extension->calls, Calls(7, "menu 2 /a /b > /"));
}

} // namespace
