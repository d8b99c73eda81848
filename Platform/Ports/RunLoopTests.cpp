#include "Platform/Ports/RunLoop.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Ports/SignalSource.h"
#include "Platform/Ports/Testing/PortFixture.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
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
    runFor(0.02);
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
    std::size_t seen = 0;
    observer->onCall = [&] {
        seen = std::max(seen, port.collector->messages.size());
    };
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    loop->addObserver_forMode(observer, NS::RunLoopMode::kDefault);
    runFor(0.001);
    loop->removeObserver_forMode(observer, NS::RunLoopMode::kDefault);
    EXPECT_EQ(seen, 2U);
    EXPECT_EQ(observer->referenceCount(), 1U);
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
    runFor(0.001);
    runFor(0.001);
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
