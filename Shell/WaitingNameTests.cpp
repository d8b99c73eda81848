#include "Shell/WaitingName.h"

#include "Shell/FinderInterface.h"
#include "Shell/Testing/BusPeer.h"
#include "Tests/Support/SessionBus.h"

#include <chrono>
#include <csignal>
#include <optional>

namespace {

using namespace std::chrono_literals;
using Shell::FinderInterface::kWaitingName;

class WaitingName : public Tests::SessionBusTest {
  protected:
    bool isThere() { return peer.nameHasOwner(kWaitingName); }

    Tests::BusPeer peer;
};

TEST_F(WaitingName, IsThereUntilItIsReleased) {
    EXPECT_FALSE(isThere());
    Shell::WaitingName name(Tests::kPatience);
    EXPECT_TRUE(isThere());
    name.release();
    EXPECT_TRUE(Tests::waitUntil([&] { return !isThere(); }));
    name.release();
}

TEST_F(WaitingName, GoesWithItsObject) {
    std::optional<Shell::WaitingName> name(Tests::kPatience);
    EXPECT_TRUE(isThere());
    name.reset();
    EXPECT_TRUE(Tests::waitUntil([&] { return !isThere(); }));
}

TEST_F(WaitingName, WaitsForAStoppedBusNoLongerThanItIsAllowedTo) {
    bus.daemon().signal(SIGSTOP);
    ASSERT_TRUE(bus.daemon().waitForState('T'));
    const auto before = std::chrono::steady_clock::now();
    const Shell::WaitingName name(100ms);
    const auto taken = std::chrono::steady_clock::now() - before;
    bus.daemon().signal(SIGCONT);
    EXPECT_GE(taken, 100ms);
    EXPECT_LT(taken, 10s);
}

class WaitingNameWithoutABus : public Tests::FolderTest {};

TEST_F(WaitingNameWithoutABus, IsNone) {
    Shell::WaitingName name(Tests::kPatience);
    name.release();
}

} // namespace
