#include "Shell/Testing/ServiceFixture.h"

#include "Platform/Foundation/Testing/RaisedException.h"

#include <chrono>
#include <csignal>
#include <sys/eventfd.h>

namespace {

using Shell::FinderInterface::kName;

constexpr const char* kRaised = "error com.Quorvane.Quorvane.QVFinderExtension.Error.Raised: "
                                "NSRangeException: index 1 beyond bounds [0 .. 0]";

// When and how the service is there.
class FinderServiceLife : public Tests::ServiceTest {
  protected:
    Tests::Process startProcess() {
        return {
            SERVICE_PROGRAM, {}, folders.root() / "service.out", folders.root() / "service.err"};
    }
};

// A source that is ready for ever.
class BusySource final : public NS::RunLoopSource {
    NS_OBJECT(BusySource)
  public:
    BusySource() : event_(::eventfd(1, EFD_CLOEXEC)) {}
    int descriptor() const noexcept override { return event_.get(); }
    void ready() override { ++turns; }

    std::size_t turns = 0;

  private:
    NS::FileDescriptor event_;
};

constinit const NS::Class BusySource::kClass{.name = "BusySource",
                                             .superclass = &NS::RunLoopSource::kClass};

class WithoutABus : public Tests::FolderTest {};

TEST_F(WithoutABus, TheServiceDoesNotStart) {
    const auto extension = NS::make<Tests::SampleExtension>();
    Shell::FinderService service(extension, [] { return std::vector<NS::RefPtr<NS::Object>>(); });
    testing::internal::CaptureStderr();
    EXPECT_FALSE(service.start());
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "no session bus for file managers to ask over: No such file or directory\n"),
              std::string::npos);
    EXPECT_FALSE(NS::RunLoop::currentRunLoop()->serveReady());
}

TEST_F(FinderServiceLife, TellsWhenTheBusHasAnsweredForTheName) {
    peer.emplace();
    service.emplace(extension, [] { return std::vector<NS::RefPtr<NS::Object>>(); });
    bool wasThere = false;
    ASSERT_TRUE(service->start([&] { wasThere = peer->nameHasOwner(kName); }));
    EXPECT_TRUE(NS::pumpUntil([&] { return wasThere; }));
}

TEST_F(FinderServiceLife, BeginsWithStart) {
    peer.emplace();
    service.emplace(extension, [] { return std::vector<NS::RefPtr<NS::Object>>(); });
    settle();
    EXPECT_FALSE(peer->nameHasOwner(kName));
    EXPECT_TRUE(service->start());
    EXPECT_TRUE(waitForName());
    EXPECT_EQ(peer->property("Generation"), "1");
}

TEST_F(FinderServiceLife, EndsWithTheService) {
    start();
    service.reset();
    EXPECT_TRUE(NS::pumpUntil([&] { return !peer->nameHasOwner(kName); }));
    EXPECT_EQ(peer->menu(0, {}).substr(0, 43), "error org.freedesktop.DBus.Error.ServiceUnk");
}

TEST_F(FinderServiceLife, WaitsForANameThatAnotherHas) {
    peer.emplace();
    peer->takeName(kName);
    testing::internal::CaptureStderr();
    ASSERT_TRUE(startService());
    settle();
    EXPECT_TRUE(peer->hasName(kName));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("another process has the name"),
              std::string::npos);
    peer->releaseName(kName);
    EXPECT_EQ(peer->property("Generation"), "1");
}

TEST_F(FinderServiceLife, DoesNotWaitForABusThatIsStopped) {
    peer.emplace();
    ASSERT_FALSE(peer->nameHasOwner(kName)); // connected
    bus.daemon().signal(SIGSTOP);
    ASSERT_TRUE(bus.daemon().waitForState('T'));
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(startService());
    settle();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    bus.daemon().signal(SIGCONT);
    EXPECT_TRUE(waitForName());
}

TEST_F(FinderServiceLife, GathersChangesWhileTheBusTakesNothing) {
    start();
    peer->followProperties();
    bus.daemon().signal(SIGSTOP);
    ASSERT_TRUE(bus.daemon().waitForState('T'));
    constexpr int kChanges = 50'000; // more than a socket holds
    for (int i = 0; i < kChanges; ++i) {
        extension->setRecord(NS::make<NS::Array>());
        (void)NS::RunLoop::currentRunLoop()->serveReady();
    }
    bus.daemon().signal(SIGCONT);
    const std::string last = "Generation=" + std::to_string(kChanges + 1);
    EXPECT_TRUE(
        NS::pumpUntil([&] { return !peer->changes.empty() && peer->changes.back() == last; }));
    EXPECT_LT(peer->changes.size(), static_cast<std::size_t>(kChanges));
}

TEST_F(FinderServiceLife, GoesOnWithoutABusThatDies) {
    start();
    EXPECT_EQ(peer->beginObserving("file:///a", true), "");
    testing::internal::CaptureStderr();
    bus.daemon().signal(SIGKILL);
    EXPECT_TRUE(NS::pumpUntil([&] { return extension->calls.back() == "end /a"; }));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("the session bus has gone"),
              std::string::npos);
    peer.reset();
    EXPECT_FALSE(NS::RunLoop::currentRunLoop()->serveReady());
}

TEST_F(FinderServiceLife, AnswersWhatRaisesAndLetsItGoOn) {
    start();
    std::string answer;
    peer->send(
        "Menu",
        [](sd_bus_message* call) {
            sd_bus_message_append(call, "tass", 0UL, 1, "file:///raising", "");
        },
        [&](const std::string& text) { answer = text; });
    testing::internal::CaptureStderr();
    EXPECT_EQ(Tests::reasonOfException([] { (void)NS::pumpUntil([] { return false; }); }),
              "index 1 beyond bounds [0 .. 0]");
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "a call over the session bus raised NSRangeException: index 1"),
              std::string::npos);
    EXPECT_TRUE(NS::pumpUntil([&] { return !answer.empty(); }));
    EXPECT_EQ(answer, kRaised);
}

TEST_F(FinderServiceLife, EndsItsProcessByAnExceptionOnceThatIsAnswered) {
    auto process = startProcess();
    peer.emplace();
    ASSERT_TRUE(waitForName());
    EXPECT_EQ(peer->run(0, "first", {{"file:///raising"}, ""}), kRaised);
    EXPECT_EQ(process.waitForExit(), 128 + SIGABRT);
    EXPECT_NE(process.errors().find("uncaught NSRangeException index 1 beyond bounds [0 .. 0]"),
              std::string::npos);
    EXPECT_TRUE(NS::pumpUntil([&] { return !peer->nameHasOwner(kName); }));
}

TEST_F(FinderServiceLife, DoesNotRunLaterWhatWasAskedOfAStoppedProcess) {
    auto process = startProcess();
    peer.emplace();
    ASSERT_TRUE(waitForName());
    process.signal(SIGSTOP);
    ASSERT_TRUE(process.waitForState('T'));
    std::string answer;
    peer->send(
        "Run",
        [](sd_bus_message* call) {
            sd_bus_message_append(call, "tsasst", 0UL, "first", 0, "", 1UL);
        },
        [&](const std::string& text) { answer = text; });
    settle();
    EXPECT_EQ(answer, "");
    process.signal(SIGCONT);
    ASSERT_TRUE(NS::pumpUntil([&] { return !answer.empty(); }));
    EXPECT_NE(answer.find("Error.TooLate"), std::string::npos);
}

TEST_F(FinderServiceLife, LeavesOtherSourcesTheirTurns) {
    start();
    const auto busy = NS::make<BusySource>();
    std::size_t menus = 0;
    std::size_t answers = 0;
    std::size_t turnsBetweenMenus = 0;
    extension->onMenu = [&] {
        ++menus;
        turnsBetweenMenus += std::exchange(busy->turns, 0) > 0 ? 1U : 0U;
    };
    constexpr std::size_t kFlood = 500;
    for (std::size_t i = 0; i < kFlood; ++i) {
        peer->send(
            "Menu", [](sd_bus_message* call) { sd_bus_message_append(call, "tass", 0UL, 0, ""); },
            [&](const std::string&) { ++answers; });
    }
    NS::RunLoop::currentRunLoop()->addSource_forMode(busy, NS::RunLoopMode::kDefault);
    EXPECT_TRUE(NS::pumpUntil([&] { return answers == kFlood; }));
    NS::RunLoop::currentRunLoop()->removeSource_forMode(busy, NS::RunLoopMode::kDefault);
    EXPECT_EQ(menus, kFlood);
    EXPECT_EQ(turnsBetweenMenus, kFlood);
}

TEST_F(FinderServiceLife, TakesASelectionOfAHundredThousandItems) {
    start();
    Tests::PlaceArguments place;
    const std::string name(250, 'n');
    for (int i = 0; i < 100'000; ++i) {
        place.selection.push_back("file:///mnt/drive/" + name + std::to_string(i));
    }
    std::size_t selected = 0;
    extension->onMenu = [&] {
        selected = FI::FinderSyncController::defaultController()->selectedItemURLs()->count();
    };
    EXPECT_TRUE(peer->menu(0, place).starts_with(R"("Sample" [)"));
    EXPECT_EQ(selected, place.selection.size());
}

} // namespace
