#include "Platform/Foundation/BlockPool.h"

#include "Platform/Foundation/MemoryRegion.h"

#include <new>
#include <utility>

namespace NS {

namespace {

constexpr std::size_t kRegionSize = MemoryRegion::kLargePage;
// The first block's place is the region's own.
constexpr std::uint32_t kBlocks = kRegionSize / BlockPool::kBlockSize - 1;

struct FreeBlock {
    FreeBlock* next;
};

} // namespace

// What stands at the beginning of a region.
struct BlockPool::Region {
    Region* next = nullptr;
    Region* previous = nullptr;
    FreeBlock* returned = nullptr; // blocks that came back
    std::uint32_t given = 0;       // how many were ever given, from the front
    std::uint32_t used = 0;

    static Region* of(void* block) noexcept {
        const auto offset = reinterpret_cast<std::uintptr_t>(block) % kRegionSize;
        return reinterpret_cast<Region*>(static_cast<std::byte*>(block) - offset);
    }

    bool isFull() const noexcept { return used == kBlocks; }

    void* take() noexcept {
        ++used;
        if (returned != nullptr) {
            return std::exchange(returned, returned->next);
        }
        return reinterpret_cast<std::byte*>(this) + ++given * kBlockSize;
    }

    // An empty region gives its blocks from the front again, in the order of their addresses.
    void giveBack(void* block) noexcept {
        if (--used == 0) {
            returned = nullptr;
            given = 0;
        } else {
            returned = ::new (block) FreeBlock{returned};
        }
    }
};

BlockPool& BlockPool::shared() noexcept {
    static constinit BlockPool pool;
    return pool;
}

void* BlockPool::take() {
    const std::lock_guard lock(mutex_);
    Region* const region = first_ != nullptr ? first_ : addRegion();
    if (region->used == 0) {
        --emptyRegions_;
    }
    void* const block = region->take();
    if (region->isFull()) {
        unlink(region);
    }
    return block;
}

void BlockPool::giveBack(void* block) noexcept {
    const std::lock_guard lock(mutex_);
    Region* const region = Region::of(block);
    if (region->isFull()) {
        link(region);
    }
    region->giveBack(block);
    if (region->used == 0) {
        settleEmpty(region);
    }
}

void BlockPool::giveBackEmptyRegions() noexcept {
    const std::lock_guard lock(mutex_);
    for (; emptyRegions_ > 0; --emptyRegions_) {
        Region* const region = last_; // where the empty ones are
        unlink(region);
        remove(region);
    }
}

std::size_t BlockPool::regionCount() const noexcept {
    const std::lock_guard lock(mutex_);
    return regions_;
}

// The first one takes memory only as it is used: most processes never need another.
BlockPool::Region* BlockPool::addRegion() {
    using MemoryRegion::Pages;
    void* const memory =
        MemoryRegion::map(kRegionSize, regions_ == 0 ? Pages::kSmall : Pages::kLarge);
    ++regions_;
    ++emptyRegions_;
    auto* const region = ::new (memory) Region;
    link(region);
    return region;
}

// To the front: what is in use already is filled first.
void BlockPool::link(Region* region) noexcept {
    region->previous = nullptr;
    region->next = first_;
    (first_ != nullptr ? first_->previous : last_) = region;
    first_ = region;
}

void BlockPool::unlink(Region* region) noexcept {
    (region->previous != nullptr ? region->previous->next : first_) = region->next;
    (region->next != nullptr ? region->next->previous : last_) = region->previous;
}

// Empty regions stand behind all others, or go.
void BlockPool::settleEmpty(Region* region) noexcept {
    unlink(region);
    if (emptyRegions_ == kKeptRegions) {
        return remove(region);
    }
    ++emptyRegions_;
    region->next = nullptr;
    region->previous = last_;
    (last_ != nullptr ? last_->next : first_) = region;
    last_ = region;
}

void BlockPool::remove(Region* region) noexcept {
    --regions_;
    MemoryRegion::unmap(region, kRegionSize);
}

} // namespace NS
