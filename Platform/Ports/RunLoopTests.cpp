#include "Platform/Ports/RunLoop.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Testing/ManualClock.h"
#include "Platform/Ports/SignalSource.h"
#include "Platform/Ports/Testing/PortFixture.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <ctime>
#include <functional>
#include <optional>
#include <poll.h>
#include <thread>

namespace {

using Tests::TestPort;

class RunLoop : public Tests::PortTest {
  protected:
    NS::Ref<NS::RunLoop> loop = NS::RunLoop::currentRunLoop();

    void runFor(double seconds) {
        loop->runUntilDate(*NS::Date::dateWithTimeIntervalSinceNow(seconds));
    }
    // A short date may be past before the loop has looked, where the machine is busy.
    void runUntil(const std::function<bool()>& reached) {
        for (int i = 0; i < 1000 && !reached(); ++i) {
            runFor(0.01);
        }
    }
    bool isReadable() const {
        pollfd state{loop->pollDescriptor(), POLLIN, 0};
        return ::poll(&state, 1, 0) == 1;
    }
};

TEST_F(RunLoop, IsOneForEachThread) {
    EXPECT_EQ(NS::RunLoop::currentRunLoop(), loop);
    bool same = true;
    std::thread([&] { same = NS::RunLoop::currentRunLoop() == loop; }).join();
    EXPECT_FALSE(same);
}

TEST_F(RunLoop, ReturnsAtItsDateAndNotEarlier) {
    TestPort port;
    for (const double seconds : {0.001, 0.0305, 0.1}) {
        const double before = NS::absoluteTimeGetCurrent();
        runFor(seconds);
        EXPECT_GE(NS::absoluteTimeGetCurrent() - before, seconds);
    }
}

TEST_F(RunLoop, WaitsForItsDateAlsoWithNothingToServe) {
    const double before = NS::absoluteTimeGetCurrent();
    runFor(0.05);
    EXPECT_GE(NS::absoluteTimeGetCurrent() - before, 0.05);
}

TEST_F(RunLoop, ServesWhatIsReadyWhenItsDateIsPast) {
    TestPort port;
    ASSERT_TRUE(send(port.port, {"x"}));
    runFor(-1);
    EXPECT_EQ(port.collector->messages.size(), 1U);
}

TEST_F(RunLoop, GoesOnServingUntilItsDate) {
    TestPort port;
    port.collector->onMessage = [&](const NS::PortMessage&) {
        if (port.collector->messages.size() < 5) {
            (void)send(port.port, {"x"});
        }
    };
    ASSERT_TRUE(send(port.port, {"x"}));
    runFor(0.3);
    EXPECT_EQ(port.collector->messages.size(), 5U);
}

TEST_F(RunLoop, ReturnsAtItsDateUnderAFloodOfMessages) {
    TestPort port;
    port.collector->onMessage = [&](const NS::PortMessage&) {
        port.collector->messages.clear();
        (void)send(port.port, {"x"});
        (void)send(port.port, {"x"});
    };
    ASSERT_TRUE(send(port.port, {"x"}));
    runFor(0.05); // or the test does not end
    EXPECT_TRUE(isReadable());
}

TEST_F(RunLoop, ServesInNestedTurns) {
    TestPort port;
    std::vector<std::string> order;
    port.collector->onMessage = [&](const NS::PortMessage&) {
        const std::string text = port.collector->text(port.collector->messages.size() - 1);
        order.push_back("begin " + text);
        if (text == "outer") {
            (void)pump([&] { return order.size() == 3; });
        }
        order.push_back("end " + text);
    };
    ASSERT_TRUE(send(port.port, {"outer"}));
    ASSERT_TRUE(send(port.port, {"inner"}));
    ASSERT_TRUE(pump([&] { return order.size() == 4; }));
    EXPECT_EQ(order,
              (std::vector<std::string>{"begin outer", "begin inner", "end inner", "end outer"}));
}

TEST_F(RunLoop, DoesNotServeAPortTakenOutByAnotherHandler) {
    TestPort first;
    TestPort second;
    first.collector->onMessage = [&](const NS::PortMessage&) {
        second.unschedule();
    };
    second.collector->onMessage = [&](const NS::PortMessage&) {
        first.unschedule();
    };
    ASSERT_TRUE(send(first.port, {"x"}));
    ASSERT_TRUE(send(second.port, {"x"}));
    serveAll();
    EXPECT_EQ(first.collector->messages.size() + second.collector->messages.size(), 1U);
}

TEST_F(RunLoop, ServesManyPortsInTurn) {
    std::vector<std::unique_ptr<TestPort>> ports;
    for (int i = 0; i < 20; ++i) {
        ports.push_back(std::make_unique<TestPort>());
        for (int n = 0; n < 50; ++n) {
            ASSERT_TRUE(send(ports.back()->port, {"x"}));
        }
    }
    const auto last = [&] {
        return ports.back()->collector->messages.size();
    };
    const auto first = [&] {
        return ports.front()->collector->messages.size();
    };
    ASSERT_TRUE(pump([&] { return last() > 0 && first() > 0; }));
    EXPECT_LT(first(), 50U);
}

TEST_F(RunLoop, KeepsAPortThatIsScheduledTwiceOnce) {
    TestPort port;
    port.schedule();
    ASSERT_TRUE(send(port.port, {"x"}));
    serveAll();
    port.unschedule();
    ASSERT_TRUE(send(port.port, {"y"}));
    serveAll();
    EXPECT_EQ(port.collector->messages.size(), 1U);
}

TEST_F(RunLoop, KeepsAMessageForAPortUntilItIsScheduled) {
    TestPort port(false);
    ASSERT_TRUE(registerPort(port, "a.name"));
    ASSERT_TRUE(send(lookUp("a.name"), {"x"}));
    serveAll();
    EXPECT_TRUE(port.collector->messages.empty());
    port.schedule();
    EXPECT_TRUE(pump([&] { return port.collector->messages.size() == 1; }));
}

TEST_F(RunLoop, CanBePolledByAForeignLoop) {
    TestPort port;
    EXPECT_FALSE(isReadable());
    EXPECT_FALSE(loop->serveReady());
    ASSERT_TRUE(send(port.port, {"x"}));
    EXPECT_TRUE(isReadable());
    EXPECT_TRUE(loop->serveReady());
    EXPECT_EQ(port.collector->messages.size(), 1U);
    EXPECT_FALSE(isReadable());
}

class CountingObserver : public NS::RunLoopObserver {
  public:
    int calls = 0;
    std::function<void()> onCall = [] {
    };
    void beforeWaiting() override {
        ++calls;
        onCall();
    }
};

TEST_F(RunLoop, LetsItsObserversLookAfterAllThatWasReady) {
    TestPort port;
    ASSERT_TRUE(send(port.port, {"x"}));
    ASSERT_TRUE(send(port.port, {"y"}));
    const auto observer = NS::make<CountingObserver>();
    std::optional<std::size_t> seen; // at its first look
    observer->onCall = [&] {
        seen = seen.value_or(port.collector->messages.size());
    };
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    runUntil([&] { return seen.has_value(); });
    loop->removeObserver_forMode(observer, NS::RunLoopMode::kDefault);
    EXPECT_EQ(seen, 2U);
    EXPECT_EQ(observer->referenceCount(), 1U);
}

TEST_F(RunLoop, LetsItsObserversLookSeldomWhileSomethingIsAlwaysReady) {
    TestPort port;
    port.collector->onMessage = [&](const NS::PortMessage&) {
        (void)send(port.port, {"x"});
    };
    ASSERT_TRUE(send(port.port, {"x"}));
    const auto observer = NS::make<CountingObserver>();
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    runUntil([&] { return port.collector->messages.size() >= 1000; });
    loop->removeObserver_forMode(observer, NS::RunLoopMode::kDefault);
    EXPECT_LT(observer->calls, 100);
}

TEST_F(RunLoop, LetsItsObserversLookBeforeEachWaitHoweverOftenNothingWasReady) {
    NS::ManualClock clock(1000); // so that no date is past before the loop has looked
    const NS::ScopedClock scoped(clock);
    const auto observer = NS::make<CountingObserver>();
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    for (int i = 1; i <= 40; ++i) {
        (void)loop->runMode_beforeDate(NS::RunLoopMode::kDefault, *NS::make<NS::Date>(1000.001));
        EXPECT_GE(observer->calls, i);
    }
    loop->removeObserver_forMode(observer, NS::RunLoopMode::kDefault);
}

TEST_F(RunLoop, LetsItsObserversLookBeforeAForeignLoopWaits) {
    const auto observer = NS::make<CountingObserver>();
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    (void)loop->serveReady();
    EXPECT_EQ(observer->calls, 1);
    loop->removeObserver_forMode(observer, NS::RunLoopMode::kDefault);
    (void)loop->serveReady();
    EXPECT_EQ(observer->calls, 1);
}

TEST_F(RunLoop, LetsAnObserverTakeItselfAway) {
    const auto observer = NS::make<CountingObserver>();
    observer->onCall = [&] {
        loop->removeObserver_forMode(observer, NS::RunLoopMode::kDefault);
    };
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    runUntil([&] { return observer->calls > 0; });
    (void)loop->serveReady();
    EXPECT_EQ(observer->calls, 1);
}

TEST_F(RunLoop, TellsWhetherASourceWasReadyByTheDate) {
    TestPort port;
    const auto soon = [] {
        return NS::Date::dateWithTimeIntervalSinceNow(0.01);
    };
    EXPECT_FALSE(loop->runMode_beforeDate(NS::RunLoopMode::kDefault, *soon()));
    ASSERT_TRUE(send(port.port, {"x"}));
    EXPECT_TRUE(loop->runMode_beforeDate(NS::RunLoopMode::kDefault, *soon()));
}

TEST_F(RunLoop, MeasuresItsDateByTheClockInUse) {
    NS::ManualClock clock(1000);
    const NS::ScopedClock scoped(clock);
    const auto before = std::chrono::steady_clock::now();
    loop->runUntilDate(*NS::make<NS::Date>(1000.05));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(50));
    EXPECT_EQ(clock.absoluteTime(), 1000);
}

// Tells how often it was read.
class CountingClock final : public NS::Clock {
  public:
    double absoluteTime() override {
        ++reads;
        return 1000;
    }
    void sleep(double) override {}

    int reads = 0;
};

TEST_F(RunLoop, ReadsNoClockToWaitForEver) {
    TestPort port;
    ASSERT_TRUE(send(port.port, {"x"}));
    CountingClock clock;
    const NS::ScopedClock scoped(clock);
    EXPECT_TRUE(loop->runMode_beforeDate(NS::RunLoopMode::kDefault, *NS::Date::distantFuture()));
    EXPECT_EQ(clock.reads, 0);
}

TEST_F(RunLoop, WaitsForEverForWhatComesLater) {
    TestPort here;
    ASSERT_TRUE(registerPort(here, "here"));
    ASSERT_TRUE(lookUp("here"));
    std::thread other([&] { EXPECT_TRUE(send(lookUp("here"), {"x"})); });
    while (here.collector->messages.empty()) {
        EXPECT_TRUE(
            loop->runMode_beforeDate(NS::RunLoopMode::kDefault, *NS::Date::distantFuture()));
    }
    other.join();
}

TEST_F(RunLoop, TakesWhatIsNoDateForAPastOne) {
    TestPort port;
    ASSERT_TRUE(send(port.port, {"x"}));
    loop->runUntilDate(*NS::make<NS::Date>(std::nan(""))); // or the test does not end
    EXPECT_EQ(port.collector->messages.size(), 1U);
}

TEST_F(RunLoop, UsesNoProcessorWhileItWaits) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    ASSERT_TRUE(send(lookUp("a.name"), {"x"}));
    serveAll();
    const std::clock_t before = std::clock();
    runFor(0.3);
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 20);
}

TEST_F(RunLoop, ServesThePortsOfEachThreadOnIt) {
    TestPort here;
    ASSERT_TRUE(registerPort(here, "here"));
    bool answered = false;
    std::thread other([&] {
        TestPort there;
        for (int i = 0; i < 100; ++i) {
            (void)send(lookUp("here"), {std::to_string(i)}, there.port);
        }
        answered = pump([&] { return there.collector->messages.size() == 100; });
    });
    here.collector->onMessage = [&](const NS::PortMessage& message) {
        (void)send(message.sendPort(), {"answer"}, here.port);
    };
    const bool received = pump([&] { return here.collector->messages.size() == 100; });
    other.join();
    EXPECT_TRUE(received);
    EXPECT_TRUE(answered);
}

TEST_F(RunLoop, KeepsAPortThatItServes) {
    auto port = NS::RefPtr<NS::MachPort>(NS::MachPort::port());
    ASSERT_TRUE(names()->registerPort_name(NS::Ref<NS::MachPort>(*port), *NS::str("a.name")));
    loop->addPort_forMode(NS::Ref<NS::MachPort>(*port), NS::RunLoopMode::kDefault);
    NS::MachPort* const inside = port.get();
    port = nullptr;
    EXPECT_TRUE(lookUp("a.name"));
    loop->removePort_forMode(NS::Ref<NS::MachPort>(*inside), NS::RunLoopMode::kDefault);
    EXPECT_FALSE(lookUp("a.name"));
}

TEST_F(RunLoop, ReceivesSignals) {
    std::vector<int> received;
    const auto signals = NS::make<NS::SignalSource>(
        std::initializer_list<int>{SIGUSR1}, [&](int number) { received.push_back(number); });
    loop->addSource_forMode(signals, NS::RunLoopMode::kDefault);
    ASSERT_EQ(::raise(SIGUSR1), 0);
    EXPECT_TRUE(pump([&] { return received == std::vector<int>{SIGUSR1}; }));
    loop->removeSource_forMode(signals, NS::RunLoopMode::kDefault);
}

} // namespace
