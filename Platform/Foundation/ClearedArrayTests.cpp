#include "Platform/Foundation/ClearedArray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <new>

namespace {

using Numbers = NS::ClearedArray<std::uint64_t>;

// Beside and beyond what comes in large pages.
constexpr std::size_t kSizes[] = {0, 1, 1000, NS::MemoryRegion::kLargePage / 8,
                                  NS::MemoryRegion::kLargePage / 8 * 3 + 1};

TEST(ClearedArray, BeginsWithZeros) {
    for (const std::size_t size : kSizes) {
        Numbers numbers;
        numbers.reset(size);
        ASSERT_EQ(numbers.size(), size);
        for (std::size_t i = 0; i < size; ++i) {
            ASSERT_EQ(numbers[i], 0U);
        }
    }
}

TEST(ClearedArray, KeepsWhatIsWritten) {
    for (const std::size_t size : kSizes) {
        Numbers numbers;
        numbers.reset(size);
        for (std::size_t i = 0; i < size; ++i) {
            numbers[i] = i;
        }
        for (std::size_t i = 0; i < size; ++i) {
            ASSERT_EQ(numbers[i], i);
        }
    }
}

TEST(ClearedArray, IsClearedWhenItIsReset) {
    Numbers numbers;
    for (const std::size_t size : kSizes) {
        numbers.reset(size);
        for (std::size_t i = 0; i < size; ++i) {
            ASSERT_EQ(numbers[i], 0U);
            numbers[i] = 1;
        }
    }
}

TEST(ClearedArray, ThrowsForMoreThanThereCanBe) {
    Numbers numbers;
    EXPECT_THROW(numbers.reset(std::numeric_limits<std::size_t>::max() / 4), std::bad_alloc);
    EXPECT_EQ(numbers.size(), 0U);
}

} // namespace
