#include "Platform/CrashReporter/linux/CrashedStack.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

class CrashedStack : public testing::Test {
  protected:
    void add(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            stack->add({stack->depth(), false});
        }
    }
    std::vector<std::uintptr_t> outer() const {
        std::vector<std::uintptr_t> addresses;
        for (std::size_t i = 0; i < stack->outerCount(); ++i) {
            addresses.push_back(stack->outer(i).address);
        }
        return addresses;
    }

    static constexpr std::size_t kInner = NS::CrashedStack::kInner;
    static constexpr std::size_t kOuter = NS::CrashedStack::kOuter;
    std::unique_ptr<NS::CrashedStack> stack = std::make_unique<NS::CrashedStack>();
};

TEST_F(CrashedStack, KeepsAllFramesThatFindRoom) {
    add(kInner);
    EXPECT_EQ(stack->inner().size(), kInner);
    EXPECT_EQ(stack->inner().back().address, kInner - 1);
    EXPECT_EQ(stack->leftOut(), 0U);
    EXPECT_TRUE(outer().empty());
}

TEST_F(CrashedStack, KeepsTheOuterFramesInTheirOrder) {
    add(kInner + 3);
    EXPECT_EQ(outer(), (std::vector<std::uintptr_t>{kInner, kInner + 1, kInner + 2}));
    EXPECT_EQ(stack->leftOut(), 0U);
}

TEST_F(CrashedStack, LeavesOutWhatLiesBetween) {
    add(kInner + kOuter + 100);
    EXPECT_EQ(stack->inner().size(), kInner);
    EXPECT_EQ(stack->leftOut(), 100U);
    ASSERT_EQ(outer().size(), kOuter);
    EXPECT_EQ(outer().front(), kInner + 100);
    EXPECT_EQ(outer().back(), kInner + kOuter + 99);
}

TEST_F(CrashedStack, TakesReturnAddressesAsTheyAre) {
    const std::vector<void*> addresses = {reinterpret_cast<void*>(0x10),
                                          reinterpret_cast<void*>(0x20)};
    add(5);
    stack->readFrom(addresses);
    ASSERT_EQ(stack->depth(), 2U);
    EXPECT_EQ(stack->inner()[1].address, 0x20U);
    EXPECT_FALSE(stack->inner()[0].interrupted);
}

} // namespace
