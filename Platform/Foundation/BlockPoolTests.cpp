#include "Platform/Foundation/BlockPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

using NS::BlockPool;

class BlockPoolTest : public testing::Test {
  protected:
    // What the block that is taken so lately is filled with, never zero.
    static unsigned char filling(std::size_t index) {
        return static_cast<unsigned char>(index % 255 + 1);
    }
    std::vector<void*> take(std::size_t count) {
        std::vector<void*> blocks;
        for (std::size_t i = 0; i < count; ++i) {
            blocks.push_back(pool_.take());
            std::memset(blocks.back(), filling(i), BlockPool::kBlockSize);
        }
        return blocks;
    }
    void giveBack(const std::vector<void*>& blocks) {
        for (void* const block : blocks) {
            pool_.giveBack(block);
        }
    }

    // More blocks than the regions that are kept hold.
    static constexpr std::size_t kMany = (BlockPool::kKeptRegions + 2) * 512;

    // How many of these blocks, all filled and given back, have lost what was in them: their memory
    // is the system's.
    static std::size_t discarded(const std::vector<void*>& blocks) {
        return static_cast<std::size_t>(std::ranges::count_if(blocks, [](void* block) {
            return static_cast<const unsigned char*>(block)[BlockPool::kBlockSize - 1] == 0;
        }));
    }

    // Every test gives back what it took.
    void TearDown() override {
        pool_.giveBackEmptyRegions();
        EXPECT_EQ(pool_.regionCount(), 0U);
    }

    BlockPool pool_;
};

TEST_F(BlockPoolTest, GivesBlocksThatDoNotOverlap) {
    const auto blocks = take(2000);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const auto* const bytes = static_cast<const unsigned char*>(blocks[i]);
        ASSERT_EQ(bytes[0], filling(i));
        ASSERT_EQ(bytes[BlockPool::kBlockSize - 1], filling(i));
    }
    giveBack(blocks);
}

TEST_F(BlockPoolTest, GivesABlockThatCameBackAgain) {
    const auto blocks = take(3);
    pool_.giveBack(blocks[1]);
    EXPECT_EQ(pool_.take(), blocks[1]);
    giveBack(blocks);
}

TEST_F(BlockPoolTest, GivesBlocksOfARegionInUseFirst) {
    const auto blocks = take(1500);
    const std::size_t regions = pool_.regionCount();
    giveBack({blocks.begin() + 700, blocks.end()}); // which empties the last region
    const auto again = take(800);
    EXPECT_EQ(pool_.regionCount(), regions);
    giveBack(again);
    giveBack({blocks.begin(), blocks.begin() + 700});
}

TEST_F(BlockPoolTest, KeepsAFewEmptyRegions) {
    giveBack(take(1500));
    EXPECT_EQ(pool_.regionCount(), 3U);
    giveBack(take(1500));
    EXPECT_EQ(pool_.regionCount(), 3U);
}

TEST_F(BlockPoolTest, GivesMoreThanAFewEmptyRegionsBackToTheSystem) {
    const auto blocks = take(kMany);
    EXPECT_GT(pool_.regionCount(), BlockPool::kKeptRegions);
    giveBack(blocks);
    EXPECT_EQ(pool_.regionCount(), BlockPool::kKeptRegions);
}

TEST_F(BlockPoolTest, GivesAllEmptyRegionsBackWhenAsked) {
    const auto blocks = take(1500);
    giveBack({blocks.begin() + 1, blocks.end()});
    pool_.giveBackEmptyRegions();
    EXPECT_EQ(pool_.regionCount(), 1U);
    giveBack({blocks.front()});
    pool_.giveBackEmptyRegions();
    EXPECT_EQ(pool_.regionCount(), 0U);
    giveBack(take(1));
}

TEST_F(BlockPoolTest, KeepsARegionWithABlockInUse) {
    auto blocks = take(kMany);
    void* const kept = blocks[700];
    blocks.erase(blocks.begin() + 700);
    giveBack(blocks);
    EXPECT_EQ(pool_.regionCount(), BlockPool::kKeptRegions + 1);
    std::memset(kept, 1, BlockPool::kBlockSize);
    pool_.giveBack(kept);
}

// One of each twenty is kept, in every region.
struct Sparse {
    explicit Sparse(const std::vector<void*>& blocks) {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            (i % 20 == 0 ? kept : idle).push_back(blocks[i]);
        }
    }
    std::vector<void*> kept;
    std::vector<void*> idle;
};

TEST_F(BlockPoolTest, KeepsTheMemoryOfAFewIdleBlocks) {
    const Sparse blocks(take(BlockPool::kKeptIdleBlocks / 2));
    giveBack(blocks.idle);
    EXPECT_EQ(discarded(blocks.idle), 0U);
    giveBack(blocks.kept);
}

TEST_F(BlockPoolTest, LeavesTheMemoryOfMoreThanAFewIdleBlocksToTheSystem) {
    const Sparse blocks(take(3 * BlockPool::kKeptIdleBlocks));
    giveBack(blocks.idle);
    EXPECT_GE(discarded(blocks.idle), blocks.idle.size() - BlockPool::kKeptIdleBlocks);
    EXPECT_EQ(discarded(blocks.kept), 0U);
    giveBack(blocks.kept);
}

TEST_F(BlockPoolTest, GivesIdleBlocksAgainWhoseMemoryWasTheSystems) {
    const Sparse blocks(take(3 * BlockPool::kKeptIdleBlocks));
    giveBack(blocks.idle);
    const std::size_t regions = pool_.regionCount();
    const auto again = take(blocks.idle.size());
    EXPECT_EQ(pool_.regionCount(), regions);
    EXPECT_EQ(discarded(again), 0U);
    giveBack(again);
    giveBack(blocks.kept);
}

TEST_F(BlockPoolTest, KeepsNoEmptyRegionWhoseMemoryIsTheSystems) {
    const Sparse blocks(take(3 * BlockPool::kKeptIdleBlocks));
    giveBack(blocks.idle);
    ASSERT_GT(discarded(blocks.idle), 0U);
    giveBack(blocks.kept);
    EXPECT_LT(pool_.regionCount(), BlockPool::kKeptRegions); // those that were idle last
}

TEST_F(BlockPoolTest, IsForAnyThread) {
    const auto takeAndGiveBack = [&] {
        for (int i = 0; i < 20; ++i) {
            giveBack(take(100));
        }
    };
    std::thread other(takeAndGiveBack);
    takeAndGiveBack();
    other.join();
    const auto blocks = take(200);
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
    giveBack(blocks);
}

} // namespace
