#include "Shell/ObservedFolders.h"
#include "Shell/Testing/ServiceFixture.h"

#include <chrono>
#include <poll.h>

namespace {

using namespace std::string_view_literals;

constexpr const char* kSampleMenu =
    R"("Sample" [("First" "first" true) ("With Sender" "withSender:" true) )"
    R"(("Off" "off" false) ("Told" "" false)])";
constexpr const char* kSampleBytes =
    "\1Sample|\1First|first|\1With Sender|withSender:||Off|off||Told||";
constexpr const char* kNotInMenu = "error com.Quorvane.Quorvane.QVFinderExtension.Error.NotInMenu: "
                                   "the menu has no enabled entry with this action";

constexpr const char* kTooLate = "error com.Quorvane.Quorvane.QVFinderExtension.Error.TooLate: "
                                 "the deadline had passed, and nothing was done";

std::uint64_t microsecondsFromNow(std::chrono::microseconds distance) {
    const auto moment = std::chrono::steady_clock::now().time_since_epoch() + distance;
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(moment).count());
}

class FinderService : public Tests::ServiceTest {
  protected:
    void SetUp() override { start(); }
};

TEST_F(FinderService, AnswersTheMenuOfAPlace) {
    EXPECT_EQ(peer->menu(0,
                         {
                             {"file:///mnt/drive/a", "file:///mnt/drive/b"},
                             "file:///mnt/drive"
    }),
              kSampleMenu);
    EXPECT_EQ(takeCalls(), Calls{"menu 0 /mnt/drive/a /mnt/drive/b > /mnt/drive"});
}

TEST_F(FinderService, AnswersTheMenuOfNoSelectionAndNoTarget) {
    EXPECT_EQ(peer->menu(3, {}), kSampleMenu);
    EXPECT_EQ(takeCalls(), Calls{"menu 3 > none"});
}

TEST_F(FinderService, PassesOnKindsThatItDoesNotKnow) {
    EXPECT_EQ(peer->menu(UINT64_MAX, {}), kSampleMenu);
    EXPECT_EQ(takeCalls(), Calls{"menu 18446744073709551615 > none"});
}

TEST_F(FinderService, AnswersTheMenuOfPaths) {
    EXPECT_EQ(peer->menuOfPaths(0, "/mnt/drive/a b%\0/mnt/drive/\xFF\0"sv, "/mnt/drive/\xC3"),
              kSampleBytes);
    EXPECT_EQ(takeCalls(), Calls{"menu 0 /mnt/drive/a b% /mnt/drive/\xFF > /mnt/drive/\xC3"});
    EXPECT_EQ(peer->menuOfPaths(3, "", ""), kSampleBytes);
    EXPECT_EQ(takeCalls(), Calls{"menu 3 > none"});
}

TEST_F(FinderService, RunsAnEntryOfTheMenuOfPaths) {
    EXPECT_EQ(peer->runOnPaths("first", "/mnt/drive/a\0"sv, "/mnt/drive"), "");
    EXPECT_EQ(takeCalls(),
              (Calls{"menu 0 /mnt/drive/a > /mnt/drive", "first /mnt/drive/a > /mnt/drive"}));
    EXPECT_EQ(peer->runOnPaths("off", "/mnt/drive/a\0"sv, ""), kNotInMenu);
    EXPECT_TRUE(peer->runOnPaths("first", "/mnt/drive/a\0"sv, "", 1).starts_with(kTooLate));
}

TEST_F(FinderService, RefusesWhatIsNoAbsolutePath) {
    const std::string kRefusal = "error org.freedesktop.DBus.Error.InvalidArgs: ";
    const std::string kSelection =
        kRefusal + "the selection is not absolute paths with a NUL behind each";
    const std::string kTarget = kRefusal + "the target is neither an absolute path nor empty";
    for (const std::string_view selection :
         {"/a"sv, "a\0"sv, "\0"sv, "/a\0\0"sv, "/a\0b\0"sv, "file:///a\0"sv}) {
        EXPECT_EQ(peer->menuOfPaths(0, selection, ""), kSelection);
        EXPECT_EQ(peer->runOnPaths("first", selection, ""), kSelection);
    }
    for (const std::string_view target : {"a"sv, "./a"sv, "file:///a"sv}) {
        EXPECT_EQ(peer->menuOfPaths(0, "/a\0"sv, target), kTarget);
        EXPECT_EQ(peer->runOnPaths("first", "", target), kTarget);
    }
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(FinderService, TakesKindsOfAllBytesInAPlace) {
    EXPECT_EQ(peer->menuOfPlace("\1\xFF\0"sv), kSampleBytes);
    EXPECT_EQ(takeCalls(), Calls{"menu 255 > none"});
}

TEST_F(FinderService, RefusesAPlaceOfAnotherFormAndOneThatIsCutOff) {
    const std::string kRefusal = "error org.freedesktop.DBus.Error.InvalidArgs: ";
    for (const std::string_view place : {""sv, "\1"sv, "\0\0\0"sv, "\2\0\0"sv}) {
        EXPECT_EQ(peer->menuOfPlace(place), kRefusal + "the place is of another form");
    }
    for (const std::string_view place : {"\1\0"sv, "\1\0/a"sv}) {
        EXPECT_EQ(peer->menuOfPlace(place), kRefusal + "the target has no NUL behind it");
    }
    EXPECT_EQ(peer->menuOfPlace("\1\0\0/a"sv),
              kRefusal + "the selection is not absolute paths with a NUL behind each");
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(FinderService, KeepsASelectionOfPathsForWhoKeepsIt) {
    NS::RefPtr<FI::Selection> kept;
    extension->onMenu = [&] {
        kept = FI::FinderSyncController::defaultController()->selection();
    };
    EXPECT_EQ(peer->menuOfPaths(0, "/mnt/drive/first\0"sv, ""), kSampleBytes);
    extension->onMenu = {};
    EXPECT_EQ(peer->menuOfPaths(0, std::string(100'000, '/') + '\0', ""), kSampleBytes);
    EXPECT_EQ(kept->firstPath()->utf8(), "/mnt/drive/first");
}

TEST_F(FinderService, AnswersAnEmptyMenuWhereThereIsNone) {
    extension->hasMenu = false;
    EXPECT_EQ(peer->menu(0, {}), R"("" [])");
    EXPECT_EQ(peer->menuOfPaths(0, "", ""), "\1|");
}

TEST_F(FinderService, RunsAnEntryOfTheMenu) {
    const Tests::PlaceArguments place{{"file:///mnt/drive/a"}, "file:///mnt/drive"};
    EXPECT_EQ(peer->run(0, "first", place), "");
    EXPECT_EQ(takeCalls(),
              (Calls{"menu 0 /mnt/drive/a > /mnt/drive", "first /mnt/drive/a > /mnt/drive"}));
    EXPECT_EQ(peer->run(0, "withSender:", {}), "");
    EXPECT_EQ(takeCalls().back(), "withSender With Sender > none");
}

TEST_F(FinderService, RunsNothingThatTheMenuDoesNotOffer) {
    for (const char* const action : {"off", "", "unknown", "beginObservingDirectoryAtURL:"}) {
        EXPECT_EQ(peer->run(0, action, {}), kNotInMenu) << action;
        EXPECT_EQ(takeCalls(), Calls{"menu 0 > none"}) << action;
    }
}

TEST_F(FinderService, DoesNothingAfterTheDeadline) {
    EXPECT_EQ(peer->run(0, "first", {}, microsecondsFromNow(std::chrono::microseconds(-1))),
              kTooLate);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(FinderService, RunsBeforeTheDeadline) {
    EXPECT_EQ(peer->run(0, "first", {}, microsecondsFromNow(std::chrono::hours(1))), "");
    EXPECT_EQ(peer->run(0, "first", {}, UINT64_MAX), "");
    EXPECT_EQ(takeCalls().size(), 4U);
}

TEST_F(FinderService, TellsOfTheExtension) {
    EXPECT_EQ(peer->property("WatchedFolders"), R"(["file:///mnt/drive"])");
    EXPECT_EQ(peer->property("Generation"), "1");
    EXPECT_EQ(peer->property("ToolbarItemName"), R"("Sample Drive")");
    EXPECT_EQ(peer->property("ToolbarItemToolTip"), R"("")");
    EXPECT_EQ(peer->property("ToolbarItemImage"), R"("SampleImage")");
    EXPECT_EQ(peer->property("ToolbarItemImageFile"), R"("file:///icons/Sample%20Image.svg")");
}

TEST_F(FinderService, TellsWhatChangesAndNothingElse) {
    peer->followProperties();
    extension->setRecord(NS::str("new"));
    ASSERT_TRUE(NS::pumpUntil([&] { return !peer->changes.empty(); }));
    EXPECT_EQ(peer->changes, Calls{"Generation=2"});
    peer->changes.clear();
    setWatchedFolders({"/mnt/other", "/mnt/b c"});
    extension->setToolTip(NS::str("There"));
    ASSERT_TRUE(NS::pumpUntil([&] { return peer->changes.size() >= 3; }));
    EXPECT_EQ(peer->changes,
              (Calls{"Generation=3", R"(WatchedFolders=["file:///mnt/other" "file:///mnt/b%20c"])",
                     R"(ToolbarItemToolTip="There")"}));
}

TEST_F(FinderService, TellsOfAChangeBeforeItAnswersWithIt) {
    peer->followProperties();
    settle();
    std::vector<std::string> changesBefore;
    peer->send(
        "Menu", [](sd_bus_message* call) { sd_bus_message_append(call, "tass", 0UL, 0, ""); },
        [&](const std::string&) { changesBefore = peer->changes; });
    // The call is there before the change, and the loop does not wait in between.
    pollfd loop{NS::RunLoop::currentRunLoop()->pollDescriptor(), POLLIN, 0};
    ASSERT_TRUE(Tests::waitUntil([&] { return ::poll(&loop, 1, 0) == 1; }));
    extension->setRecord(NS::str("new"));
    ASSERT_TRUE(NS::pumpUntil([&] { return !changesBefore.empty(); }, 5));
    EXPECT_EQ(changesBefore, Calls{"Generation=2"});
}

TEST_F(FinderService, TellsThatTheHostDoesNotAnswerWhenTheToolbarsMenuHasAskedIt) {
    service.reset();
    ASSERT_TRUE(NS::pumpUntil([&] { return !peer->nameHasOwner(Shell::FinderInterface::kName); }));
    NS::RefPtr<NS::Object> latest = NS::str("record");
    service.emplace(
        extension, [] { return std::vector<NS::RefPtr<NS::Object>>(); },
        Shell::Host{nullptr, [&] {
                        return latest;
                    }});
    ASSERT_TRUE(service->start());
    ASSERT_TRUE(waitForName());
    peer->followProperties();
    (void)peer->menu(0, {});
    EXPECT_EQ(peer->property("HostAnswers"), "true");
    (void)peer->menu(3, {});
    ASSERT_TRUE(NS::pumpUntil([&] { return !peer->changes.empty(); }));
    EXPECT_EQ(peer->changes, Calls{"HostAnswers=false"});
    peer->changes.clear();
    latest = NS::str("another");
    ASSERT_TRUE(NS::pumpUntil([&] { return !peer->changes.empty(); }));
    EXPECT_EQ(peer->changes, Calls{"HostAnswers=true"});
}

TEST_F(FinderService, PassesOnEachBeginAndEnd) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(peer->beginObserving("file:///mnt/drive", false), "");
        EXPECT_EQ(peer->endObserving("file:///mnt/drive/a%20b/"), "");
    }
    EXPECT_EQ(takeCalls(), (Calls{"begin /mnt/drive", "end /mnt/drive/a b", "begin /mnt/drive",
                                  "end /mnt/drive/a b"}));
}

TEST_F(FinderService, PassesOnTheFirstBeginAndTheLastEndOfFoldersThatItKeeps) {
    EXPECT_EQ(peer->beginObserving("file:///a", true), "");
    Tests::BusPeer other;
    EXPECT_EQ(other.beginObserving("file:///a", true), "");
    EXPECT_EQ(peer->endObserving("file:///a"), "");
    EXPECT_EQ(takeCalls(), Calls{"begin /a"});
    EXPECT_EQ(other.endObserving("file:///a"), "");
    EXPECT_EQ(takeCalls(), Calls{"end /a"});
}

TEST_F(FinderService, EndsTheFoldersOfACallerThatLeavesTheBus) {
    {
        Tests::BusPeer leaving;
        EXPECT_EQ(leaving.beginObserving("file:///a", true), "");
        EXPECT_EQ(leaving.beginObserving("file:///b", true), "");
        EXPECT_EQ(leaving.beginObserving("file:///plain", false), "");
        EXPECT_EQ(peer->beginObserving("file:///b", true), "");
    }
    EXPECT_TRUE(NS::pumpUntil([&] { return extension->calls.back() == "end /a"; }));
    EXPECT_EQ(takeCalls(), (Calls{"begin /a", "begin /b", "begin /plain", "end /a"}));
}

TEST_F(FinderService, EndsTheFoldersOfACallerThatIsGoneAtOnce) {
    {
        Tests::BusPeer leaving;
        ASSERT_TRUE(leaving.nameHasOwner(Shell::FinderInterface::kName)); // connected
        leaving.send(
            "BeginObserving",
            [](sd_bus_message* call) { sd_bus_message_append(call, "sb", "file:///a", 1); }, {});
    }
    EXPECT_TRUE(NS::pumpUntil([&] { return extension->calls.size() == 2; }));
    EXPECT_EQ(takeCalls(), (Calls{"begin /a", "end /a"}));
}

TEST_F(FinderService, RefusesMoreFoldersThanItKeepsForACaller) {
    const std::string path = "file:///" + std::string(Shell::ObservedFolders::kLongestPath, 'a');
    EXPECT_TRUE(peer->beginObserving(path, true)
                    .starts_with("error org.freedesktop.DBus.Error.LimitsExceeded: "));
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(FinderService, PassesOnARequestForABadge) {
    EXPECT_EQ(peer->call("RequestBadge",
                         [](sd_bus_message* call) {
                             sd_bus_message_append(call, "s", "file:///mnt/drive/a");
                         }),
              "");
    EXPECT_EQ(takeCalls(), Calls{"badge /mnt/drive/a"});
}

TEST_F(FinderService, CarriesAnyName) {
    struct Name {
        const char* url;
        const char* path;
    };
    constexpr Name kNames[] = {
        {"file:///%20b%20",             "/ b "                   },
        {"file:///%22'%60%5C",          "/\"'`\\"                },
        {"file:///a%0Ab%0D",            "/a\nb\r"                },
        {"file:///a%3Ab",               "/a:b"                   },
        {"file:///a:b",                 "/a:b"                   },
        {"file:///100%25%2541",         "/100%%41"               },
        {"file:///%F0%9F%98%80",        "/\xF0\x9F\x98\x80"      },
        {"file:///%C3%A9",              "/\xC3\xA9"              },
        {"file:///e%CC%81",             "/e\xCC\x81"             },
        {"file:///%FF%C3%28%ED%A0%80z", "/\xFF\xC3(\xED\xA0\x80z"},
    };
    for (const auto& [url, path] : kNames) {
        EXPECT_EQ(peer->menu(0, {{url}, url}), kSampleMenu);
        EXPECT_EQ(takeCalls(), Calls{std::string("menu 0 ") + path + " > " + path});
    }
    const std::string longName(255, 'n');
    const std::string longPath = "/" + std::string(4000, 'p');
    EXPECT_EQ(peer->menu(0, {{"file:///" + longName}, "file://" + longPath}), kSampleMenu);
    EXPECT_EQ(takeCalls(), Calls{"menu 0 /" + longName + " > " + longPath});
}

TEST_F(FinderService, RefusesWhatIsNoFileURL) {
    const std::string kRefusal = "error org.freedesktop.DBus.Error.InvalidArgs: ";
    const std::string kWanted =
        kRefusal + "a file URL is wanted: file:///, then percent-encoded bytes";
    const std::string kTarget = kRefusal + "the target is neither a file URL nor empty";
    const std::string kSecond = kRefusal + "item 2 of the selection is no file URL";
    EXPECT_EQ(peer->menu(0,
                         {
                             {"file:///a", "/mnt"},
                             ""
    }),
              kSecond);
    EXPECT_EQ(peer->menu(0,
                         {
                             {"file:///a", ""},
                             "file:///"
    }),
              kSecond);
    EXPECT_EQ(peer->menu(0, {{}, "http://host/"}), kTarget);
    EXPECT_EQ(peer->run(0, "first",
                        {
                            {"file:///a", "file:///%"},
                            ""
    }),
              kSecond);
    EXPECT_EQ(peer->run(0, "first", {{}, "file:///\xC3\xA9"}, 1), kTarget);
    EXPECT_EQ(peer->beginObserving("", true), kWanted);
    EXPECT_EQ(peer->beginObserving("mnt", false), kWanted);
    EXPECT_EQ(peer->endObserving("file:///%00"), kWanted);
    EXPECT_EQ(peer->call("RequestBadge",
                         [](sd_bus_message* call) { sd_bus_message_append(call, "s", "x"); }),
              kWanted);
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(FinderService, RefusesArgumentsOfOtherTypes) {
    const auto otherPlace = [](sd_bus_message* call) {
        sd_bus_message_append(call, "tayay", std::uint64_t{0}, 0, 0);
    };
    EXPECT_TRUE(peer->call("MenuOfPaths", otherPlace)
                    .starts_with("error org.freedesktop.DBus.Error.InvalidArgs: "));
    EXPECT_TRUE(peer->call("Menu").starts_with("error org.freedesktop.DBus.Error.InvalidArgs: "));
    EXPECT_EQ(takeCalls(), Calls{});
}

} // namespace
