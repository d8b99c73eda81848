#include "Platform/Foundation/GrowingStorage.h"

#include "Platform/Foundation/MemoryRegion.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

using NS::GrowingStorage;
using NS::MemoryRegion::kLargePage;

constexpr unsigned char kMark = 0x5A;

class GrowingStorageTest : public testing::Test {
  protected:
    static unsigned char* bytesOf(const GrowingStorage& storage) {
        return static_cast<unsigned char*>(storage.memory());
    }
    // Marks the ends of what it has.
    static void mark(const GrowingStorage& storage) {
        bytesOf(storage)[0] = kMark;
        bytesOf(storage)[storage.size() - 1] = kMark;
    }
    static bool isMarked(const GrowingStorage& storage, std::size_t size) {
        return bytesOf(storage)[0] == kMark && bytesOf(storage)[size - 1] == kMark;
    }

    GrowingStorage storage_;
};

TEST_F(GrowingStorageTest, HasNothingAtFirst) {
    EXPECT_EQ(storage_.memory(), nullptr);
    EXPECT_EQ(storage_.size(), 0U);
}

TEST_F(GrowingStorageTest, DoublesAtLeast) {
    for (std::size_t size = 0; size < 8 * kLargePage; size = storage_.size()) {
        storage_.grow(size, size + 1);
        ASSERT_GE(storage_.size(), 2 * size);
    }
}

TEST_F(GrowingStorageTest, GrowsAtOnceToWhatItIsAskedFor) {
    storage_.grow(0, 3 * kLargePage + 1);
    EXPECT_GE(storage_.size(), 3 * kLargePage + 1);
    mark(storage_);
}

TEST_F(GrowingStorageTest, KeepsItsContentsWhileItGrows) {
    storage_.grow(0, 1);
    while (storage_.size() < 16 * kLargePage) {
        const std::size_t size = storage_.size();
        mark(storage_);
        storage_.grow(size, size + 1);
        ASSERT_TRUE(isMarked(storage_, size)) << size;
    }
}

TEST_F(GrowingStorageTest, StandsAtALargePagesMultipleWhereItIsLarge) {
    storage_.grow(0, kLargePage);
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(storage_.memory()) % kLargePage, 0U);
        storage_.grow(storage_.size(), storage_.size() + 1);
    }
}

TEST_F(GrowingStorageTest, LeavesItsMemoryToTheOneThatTakesItOver) {
    storage_.grow(0, kLargePage);
    mark(storage_);
    GrowingStorage other(std::move(storage_));
    EXPECT_TRUE(isMarked(other, kLargePage));
    storage_ = std::move(other);
    EXPECT_TRUE(isMarked(storage_, kLargePage));
}

TEST_F(GrowingStorageTest, ThrowsForMoreThanThereCanBe) {
    storage_.grow(0, kLargePage);
    mark(storage_);
    EXPECT_THROW(storage_.grow(kLargePage, std::numeric_limits<std::size_t>::max() / 2),
                 std::bad_alloc);
    EXPECT_TRUE(isMarked(storage_, kLargePage));
}

} // namespace
