#include "Platform/Ports/PortDrops.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class PortDrops : public testing::Test {
  protected:
    ~PortDrops() override { NS::setPortDropObserver({}); }
};

TEST_F(PortDrops, AreCountedByReason) {
    const auto full = NS::portDropCount(NS::PortDrop::kQueueFull);
    const auto dead = NS::portDropCount(NS::PortDrop::kDeadPeer);
    NS::notePortDrop(NS::PortDrop::kQueueFull);
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kQueueFull), full + 1);
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kDeadPeer), dead);
}

TEST_F(PortDrops, AreToldToTheLastObserver) {
    std::vector<NS::PortDrop> first;
    std::vector<NS::PortDrop> second;
    NS::setPortDropObserver([&](NS::PortDrop reason) { first.push_back(reason); });
    NS::setPortDropObserver([&](NS::PortDrop reason) { second.push_back(reason); });
    NS::notePortDrop(NS::PortDrop::kBadMemoryFile);
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(second, std::vector<NS::PortDrop>{NS::PortDrop::kBadMemoryFile});
}

} // namespace
