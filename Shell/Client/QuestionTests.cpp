#include "Shell/Client/Testing/ClientFixture.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <ostream>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Shell::MenuKind;
using Shell::Outcome;
using Shell::Place;
using Clock = std::chrono::steady_clock;

// Menus and commands, as a file manager asks for them.
class Question : public Tests::ClientTest {
  protected:
    void SetUp() override { start(); }
    Outcome menu(const Place& place, std::chrono::milliseconds timeout = kLong) {
        return client->menu(MenuKind::kItems, place, timeout).outcome;
    }
    Outcome run(std::string_view action, std::chrono::milliseconds timeout = kLong) {
        return client->run(MenuKind::kItems, action, item, timeout);
    }
    // An item with a name of so many letters.
    static Place itemOf(std::size_t letters) {
        Place place{{"/mnt/Drive/"}, ""};
        place.items[0].append(letters, 'a');
        return place;
    }
    std::string lastCall() {
        const auto calls = extension->calls();
        return calls.empty() ? "none" : calls.back();
    }

    const Place item{{"/mnt/Drive/a"}, "/mnt/Drive"};
};

TEST_F(Question, AsksForTheMenuOfAPlace) {
    const auto answer = client->menu(MenuKind::kSidebar, item, kLong);
    EXPECT_EQ(answer.outcome, Outcome::kDone);
    EXPECT_EQ(lastCall(), "MenuOfPaths 2 [/mnt/Drive/a] /mnt/Drive");
    ASSERT_TRUE(answer.menu);
    EXPECT_EQ(answer.menu->title, "Fake");
    ASSERT_EQ(answer.menu->entries.size(), 2U);
    EXPECT_EQ(answer.menu->entries[0].title, "Do It");
    EXPECT_EQ(answer.menu->entries[0].action, "doIt:");
    EXPECT_TRUE(answer.menu->entries[0].enabled);
    EXPECT_EQ(answer.menu->entries[1].title, "Told");
    EXPECT_EQ(answer.menu->entries[1].action, "");
    EXPECT_FALSE(answer.menu->entries[1].enabled);
}

TEST_F(Question, TakesAMenuWithoutEntries) {
    extension->setMenu({"", {}});
    const auto answer = client->menu(MenuKind::kContainer, {{}, "/mnt/Drive"}, kLong);
    EXPECT_EQ(answer.outcome, Outcome::kDone);
    EXPECT_TRUE(answer.menu && answer.menu->entries.empty());
}

TEST_F(Question, FailsWhenTheAnswerIsNoMenu) {
    extension->setMenuMalformed();
    const auto answer = client->menu(MenuKind::kItems, item, kLong);
    EXPECT_EQ(answer.outcome, Outcome::kFailed);
    EXPECT_FALSE(answer.menu);
    EXPECT_EQ(client->error(), "its menu has a form that is not known here");
}

TEST_F(Question, FailsWhenTheMenuIsNoText) {
    extension->setMenu({"\xFF", {}});
    const auto answer = client->menu(MenuKind::kItems, item, kLong);
    EXPECT_EQ(answer.outcome, Outcome::kFailed);
    EXPECT_FALSE(answer.menu);
}

TEST_F(Question, CarriesOutAnEntry) {
    EXPECT_EQ(run("doIt:"), Outcome::kDone);
    EXPECT_EQ(lastCall(), "RunOnPaths 0 doIt: [/mnt/Drive/a] /mnt/Drive later");
}

TEST_F(Question, HasADeadlineOnTheMonotonicClock) {
    const auto now = [] {
        timespec time{};
        ::clock_gettime(CLOCK_MONOTONIC, &time);
        return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000 +
               static_cast<std::uint64_t>(time.tv_nsec) / 1000;
    };
    const auto before = now();
    EXPECT_EQ(run("doIt:", 5s), Outcome::kDone);
    EXPECT_GE(extension->deadline(), before + 5'000'000);
    EXPECT_LE(extension->deadline(), now() + 5'000'000);
}

TEST_F(Question, BearsTimeoutsOfAnyLength) {
    EXPECT_EQ(run("doIt:", std::chrono::milliseconds::max()), Outcome::kDone);
    extension->keepCalls();
    EXPECT_EQ(menu(item, std::chrono::milliseconds::min()), Outcome::kTimedOut);
    EXPECT_EQ(run("doIt:", -1ms), Outcome::kTimedOut);
}

TEST_F(Question, CarriesNamesByteForByte) {
    const Place odd{
        {"/mnt/Drive/a b", "/mnt/Drive/\"'\n\\", "/mnt/Drive/100%:;", "/mnt/Drive/\xF0\x9F\x90\x8B",
         "/mnt/Drive/e\xCC\x81\xC3\xA9", "/mnt/Drive/\xFF\xFE"},
        ""
    };
    EXPECT_EQ(menu(odd), Outcome::kDone);
    std::string items;
    for (const std::string& each : odd.items) {
        items += (items.empty() ? "" : " ") + each;
    }
    EXPECT_EQ(lastCall(), "MenuOfPaths 0 [" + items + "] ");
}

TEST_F(Question, IsNotAskedWhereNothingIsOffered) {
    EXPECT_EQ(menu({{"/mnt/Drive"}, "/mnt"}), Outcome::kNotOffered);
    EXPECT_EQ(client->run(MenuKind::kItems, "doIt:", {{"/mnt/Drive2/a"}, ""}, kLong),
              Outcome::kNotOffered);
    EXPECT_TRUE(extension->calls().empty());
}

TEST_F(Question, GivesUpAtItsTimeout) {
    extension->keepCalls();
    const auto before = Clock::now();
    EXPECT_EQ(menu(item, 60ms), Outcome::kTimedOut);
    EXPECT_GE(Clock::now() - before, 60ms);
    EXPECT_TRUE(extension->waitForCalls(1));
    EXPECT_TRUE(client->isPresent());
}

TEST_F(Question, WaitsALittleLongerThanItsDeadlineForACommand) {
    extension->keepCalls();
    const auto before = Clock::now();
    EXPECT_EQ(run("doIt:", 20ms), Outcome::kTimedOut);
    EXPECT_GE(Clock::now() - before, 70ms);
}

TEST_F(Question, DropsAnAnswerThatComesLate) {
    extension->keepCalls();
    EXPECT_EQ(menu(item, 0ms), Outcome::kTimedOut);
    ASSERT_TRUE(extension->waitForCalls(1));
    extension->setMenu({"Late", {}});
    extension->answerKept();
    extension->setMenu({"Right", {}});
    const auto answer = client->menu(MenuKind::kItems, item, kLong);
    ASSERT_TRUE(answer.menu);
    EXPECT_EQ(answer.menu->title, "Right");
}

TEST_F(Question, EndsWhenTheExtensionGoes) {
    extension->keepCalls();
    std::thread killer([this] {
        (void)extension->waitForCalls(1);
        extension.reset();
    });
    EXPECT_EQ(run("doIt:"), Outcome::kAbsent);
    killer.join();
    EXPECT_TRUE(pump([&] { return !client->isPresent(); }));
}

TEST_F(Question, EndsWhenTheNameGoes) {
    extension->keepCalls();
    std::thread leaver([this] {
        (void)extension->waitForCalls(1);
        extension->disappear();
    });
    const auto before = Clock::now();
    EXPECT_EQ(menu(item), Outcome::kAbsent);
    EXPECT_LT(Clock::now() - before, kLong / 2);
    leaver.join();
}

TEST_F(Question, EndsWhenTheBusGoes) {
    extension->keepCalls();
    std::thread killer([this] {
        (void)extension->waitForCalls(1);
        bus.daemon().signal(SIGKILL);
    });
    EXPECT_EQ(menu(item), Outcome::kAbsent);
    killer.join();
    EXPECT_FALSE(client->isPresent());
}

TEST_F(Question, GivesUpInTimeWhenTheBusIsStopped) {
    stop(bus.daemon());
    const auto before = Clock::now();
    EXPECT_EQ(menu(item, 60ms), Outcome::kTimedOut);
    EXPECT_EQ(run("doIt:", 60ms), Outcome::kTimedOut);
    EXPECT_GE(Clock::now() - before, 120ms);
    EXPECT_LT(Clock::now() - before, 30s);
    bus.daemon().signal(SIGCONT);
}

TEST_F(Question, IsNotQueuedBehindABusThatTakesNothing) {
    stop(bus.daemon());
    constexpr std::size_t kMoreThanASocketTakes = 40'000'000;
    EXPECT_EQ(menu(itemOf(kMoreThanASocketTakes), 0ms), Outcome::kTimedOut);
    EXPECT_EQ(menu(item, 0ms), Outcome::kTimedOut);
    EXPECT_EQ(menu(item, 0ms), Outcome::kTimedOut);
    bus.daemon().signal(SIGCONT);
    EXPECT_EQ(run("doIt:"), Outcome::kDone);
    const auto calls = extension->calls();
    EXPECT_EQ(calls.size(), 2U);
    EXPECT_EQ(std::ranges::count_if(calls, [](auto& call) { return call.starts_with("Menu"); }), 1);
}

TEST_F(Question, CarriesAHundredThousandItems) {
    Place place;
    for (int i = 0; i < 100'000; ++i) {
        place.items.push_back("/mnt/Drive/holiday picture " + std::to_string(i) + ".jpg");
    }
    EXPECT_EQ(menu(place), Outcome::kDone);
    const std::string call = lastCall();
    EXPECT_TRUE(call.starts_with("MenuOfPaths 0 [/mnt/Drive/holiday picture 0.jpg "));
    EXPECT_TRUE(call.ends_with(" /mnt/Drive/holiday picture 99999.jpg] "));
    EXPECT_EQ(std::ranges::count(call, '/'), 300'000);
}

TEST_F(Question, IsTooLargeBeyondWhatAnArrayOfTheBusHolds) {
    constexpr std::size_t kLongest = std::size_t{64} << 20U;
    constexpr std::size_t kHead = 3; // form, kind, and the NUL behind no target
    const std::size_t limit = kLongest - kHead - std::string("/mnt/Drive/").size() - 1;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    const std::size_t fits = limit / 8; // the whole takes minutes there on a busy machine
#else
    const std::size_t fits = limit;
#endif
    EXPECT_EQ(menu(itemOf(limit + 1)), Outcome::kTooLarge);
    EXPECT_TRUE(extension->calls().empty());
    EXPECT_NE(client->error(), "");
    EXPECT_EQ(menu(itemOf(fits)), Outcome::kDone);
    EXPECT_EQ(client->error(), "");
}

TEST_F(Question, IsTooLargeWithATextThatLeavesNoRoom) {
    EXPECT_EQ(run(itemOf(std::size_t{16} << 20U).items[0]), Outcome::kTooLarge);
    EXPECT_TRUE(extension->calls().empty());
}

TEST_F(Question, FailsWithAnActionThatIsNoText) {
    EXPECT_EQ(run("\xFF"), Outcome::kFailed);
    EXPECT_EQ(run(std::string_view("doIt:\0x", 7)), Outcome::kFailed);
    EXPECT_TRUE(extension->calls().empty());
    EXPECT_EQ(run("doIt:"), Outcome::kDone);
}

struct ErrorRow {
    const char* name;
    Outcome outcome;
};

// The name of its test.
void PrintTo(const ErrorRow& row, std::ostream* stream) {
    *stream << row.name;
}

class QuestionRefused : public Question, public testing::WithParamInterface<ErrorRow> {};

TEST_P(QuestionRefused, EndsAsTheErrorSays) {
    extension->refuseWith(GetParam().name, "because");
    EXPECT_EQ(run("doIt:"), GetParam().outcome);
    EXPECT_EQ(client->error(), "because");
    EXPECT_EQ(menu(item), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(
    Question, QuestionRefused,
    testing::Values(
        ErrorRow{"com.Quorvane.Quorvane.QVFinderExtension.Error.NotInMenu", Outcome::kNotInMenu},
        ErrorRow{"com.Quorvane.Quorvane.QVFinderExtension.Error.TooLate", Outcome::kTimedOut},
        ErrorRow{"com.Quorvane.Quorvane.QVFinderExtension.Error.Raised", Outcome::kFailed},
        ErrorRow{"org.freedesktop.DBus.Error.NoReply", Outcome::kAbsent},
        ErrorRow{"org.freedesktop.DBus.Error.LimitsExceeded", Outcome::kFailed},
        ErrorRow{"org.freedesktop.DBus.Error.InvalidArgs", Outcome::kFailed},
        ErrorRow{"com.example.Unheard.Of", Outcome::kFailed}));

} // namespace
