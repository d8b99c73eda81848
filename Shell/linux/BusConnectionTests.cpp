#include "Shell/linux/BusConnection.h"

#include "Platform/Ports/Testing/PumpUntil.h"
#include "Tests/Support/SessionBus.h"

#include <chrono>
#include <csignal>
#include <string>

namespace {

using namespace std::chrono_literals;

class BusConnection : public Tests::SessionBusTest, public Shell::BusConnection::Delegate {
  protected:
    ~BusConnection() override { connection->close(); }

    void SetUp() override {
        ASSERT_GE(connection->open(), 0);
        const char* name = nullptr;
        ASSERT_GE(sd_bus_get_unique_name(connection->bus(), &name), 0); // connected
        connection->schedule();
    }
    void busWillServe() override {
        const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
        if (static_cast<std::uint64_t>(now.count()) >= moment) {
            moment = kNever;
        }
    }
    void busServed() override { ++served; }
    std::uint64_t nextMoment() const override { return moment; }
    void busLost() override { ++lost; }

    void stopBus() {
        bus.daemon().signal(SIGSTOP);
        ASSERT_TRUE(bus.daemon().waitForState('T'));
    }
    // The bus takes nothing more, and something waits for it.
    void fillBus() {
        stopBus();
        const std::string text(1'000'000, 'x');
        for (int i = 0; i < 1000 && !connection->hasUnsent(); ++i) {
            ASSERT_GE(sd_bus_emit_signal(connection->bus(), "/a", "a.b", "C", "s", text.c_str()),
                      0);
        }
        ASSERT_TRUE(connection->hasUnsent());
    }
    bool isServed() { return NS::RunLoop::currentRunLoop()->serveReady(); }

    NS::Ref<Shell::BusConnection> connection = NS::make<Shell::BusConnection>(*this);
    int served = 0;
    int lost = 0;
    static constexpr std::uint64_t kNever = Shell::BusConnection::kNever;
    std::uint64_t moment = kNever;
};

TEST_F(BusConnection, SendsWhatTheBusDoesNotTakeAtOnceFromTheLoop) {
    fillBus();
    bus.daemon().signal(SIGCONT);
    EXPECT_TRUE(NS::pumpUntil([&] { return !connection->hasUnsent(); }));
}

TEST_F(BusConnection, FlushesUntilTheBusHasTakenEverything) {
    fillBus();
    bus.daemon().signal(SIGCONT);
    connection->flush(60s);
    EXPECT_FALSE(connection->hasUnsent());
    EXPECT_EQ(served, 0);
}

TEST_F(BusConnection, FlushesNoLongerThanItIsAllowedTo) {
    fillBus();
    const auto before = std::chrono::steady_clock::now();
    connection->flush(100ms);
    const auto taken = std::chrono::steady_clock::now() - before;
    EXPECT_TRUE(connection->hasUnsent());
    EXPECT_GE(taken, 100ms);
    EXPECT_LT(taken, 10s);
}

TEST_F(BusConnection, WakesAtItsDelegatesMoment) {
    const auto distance = std::chrono::steady_clock::now().time_since_epoch() + 50ms;
    moment = static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(distance).count());
    EXPECT_TRUE(NS::pumpUntil([&] { return moment == kNever; }));
}

TEST_F(BusConnection, WakesForCallsThatAreNotAnsweredInTime) {
    stopBus();
    constexpr std::uint64_t kTimeout = 50'000; // microseconds
    int answers = 0;
    sd_bus_message* call = nullptr;
    ASSERT_GE(sd_bus_message_new_method_call(connection->bus(), &call, "a.b", "/a", "a.b", "C"), 0);
    const auto answered = [](sd_bus_message* answer, void* count, sd_bus_error*) {
        *static_cast<int*>(count) += sd_bus_message_is_method_error(answer, nullptr);
        return 1;
    };
    ASSERT_GE(sd_bus_call_async(connection->bus(), nullptr, call, answered, &answers, kTimeout), 0);
    sd_bus_message_unref(call);
    EXPECT_TRUE(NS::pumpUntil([&] { return answers > 0; }));
}

TEST_F(BusConnection, RestsWhenThereIsNothingToDo) {
    // The bus may still have something to say at first.
    EXPECT_TRUE(NS::pumpUntil([] {
        return !NS::RunLoop::currentRunLoop()->runMode_beforeDate(
            NS::RunLoopMode::kDefault, *NS::Date::dateWithTimeIntervalSinceNow(0.1));
    }));
}

TEST_F(BusConnection, LeavesTheLoopWhenTheBusGoes) {
    bus.daemon().signal(SIGKILL);
    EXPECT_TRUE(NS::pumpUntil([&] { return lost == 1; }));
    EXPECT_EQ(connection->bus(), nullptr);
    EXPECT_FALSE(connection->hasUnsent());
    EXPECT_FALSE(isServed());
    EXPECT_EQ(lost, 1);
}

// The next connection may have the descriptor that this one had.
TEST_F(BusConnection, HearsWhatComesAfterAnotherOneClosed) {
    ASSERT_TRUE(NS::pumpUntil([&] { return served > 0; }));
    connection->close();
    connection = NS::make<Shell::BusConnection>(*this);
    SetUp();
    ASSERT_FALSE(HasFatalFailure());
    bool isAnswered = false;
    const auto answered = [](sd_bus_message*, void* is, sd_bus_error*) {
        return static_cast<int>(*static_cast<bool*>(is) = true);
    };
    for (int i = 0; i < 2; ++i) { // the second when nothing but its answer is to come
        isAnswered = false;
        ASSERT_GE(sd_bus_call_method_async(connection->bus(), nullptr, "org.freedesktop.DBus", "/",
                                           "org.freedesktop.DBus", "GetId", answered, &isAnswered,
                                           ""),
                  0);
        EXPECT_TRUE(NS::pumpUntil([&] { return isAnswered; }));
    }
}

TEST_F(BusConnection, LeavesTheLoopWhenItCloses) {
    connection->close();
    connection->close();
    EXPECT_FALSE(isServed());
    EXPECT_EQ(lost, 0);
    EXPECT_EQ(connection->referenceCount(), 1U);
}

} // namespace
