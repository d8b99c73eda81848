#include "Platform/Foundation/BlockPool.h"

#include "Platform/Foundation/MemoryRegion.h"

#include <array>
#include <bit>
#include <new>
#include <utility>

namespace NS {

namespace {

constexpr std::size_t kRegionSize = MemoryRegion::kLargePage;
constexpr std::size_t kPlaces = kRegionSize / BlockPool::kBlockSize;
// The first block's place is the region's own.
constexpr std::size_t kBlocks = kPlaces - 1;

// Which of a region's places are meant.
class Places {
  public:
    bool has(std::size_t place) const noexcept { return (words_[place / kBits] & bit(place)) != 0; }
    void add(std::size_t place) noexcept { words_[place / kBits] |= bit(place); }
    void remove(std::size_t place) noexcept { words_[place / kBits] &= ~bit(place); }

    // Where there is one.
    std::size_t first() const noexcept {
        std::size_t word = 0;
        while (words_[word] == 0) {
            ++word;
        }
        return word * kBits + static_cast<std::size_t>(std::countr_zero(words_[word]));
    }

  private:
    static constexpr std::size_t kBits = 64;
    static constexpr std::uint64_t bit(std::size_t place) noexcept {
        return std::uint64_t{1} << place % kBits;
    }

    std::array<std::uint64_t, kPlaces / kBits> words_{};
};

} // namespace

// What stands at the beginning of a region.
struct BlockPool::Region {
    Region* next = nullptr;
    Region* previous = nullptr;
    Places free;     // the blocks that there are to give
    Places unbacked; // those of them that take no memory
    std::size_t used = 0;
    std::size_t unbackedCount = 0;
    bool isThinned = false; // some blocks' memory was discarded

    explicit Region(MemoryRegion::Pages pages) noexcept {
        for (std::size_t place = 1; place < kPlaces; ++place) {
            free.add(place);
        }
        if (pages == MemoryRegion::Pages::kSmall) {
            unbacked = free;
            unbackedCount = kBlocks;
        }
    }

    static Region* of(void* block) noexcept {
        const auto offset = reinterpret_cast<std::uintptr_t>(block) % kRegionSize;
        return reinterpret_cast<Region*>(static_cast<std::byte*>(block) - offset);
    }

    bool isEmpty() const noexcept { return used == 0; }
    bool isFull() const noexcept { return used == kBlocks; }
    // How many blocks take memory for nothing. Those of an empty region are not in between others.
    std::size_t idle() const noexcept { return isEmpty() ? 0 : kBlocks - used - unbackedCount; }

    // From the front, so that what is made together stands in the order of its addresses.
    void* take() noexcept {
        const std::size_t place = free.first();
        free.remove(place);
        ++used;
        if (unbacked.has(place)) {
            unbacked.remove(place);
            --unbackedCount;
        }
        return blockAt(place);
    }

    void giveBack(void* block) noexcept {
        free.add(reinterpret_cast<std::uintptr_t>(block) % kRegionSize / kBlockSize);
        --used;
    }

    // Leaves the memory of all idle blocks to the system, as many at a time as stand together.
    void discardIdle() noexcept {
        if (!std::exchange(isThinned, true)) {
            MemoryRegion::makePagesSmall(this, kRegionSize);
        }
        for (std::size_t place = 1; place < kPlaces;) {
            const std::size_t end = endOfIdle(place);
            if (end > place) {
                MemoryRegion::discard(blockAt(place), (end - place) * kBlockSize);
            }
            place = end + 1;
        }
        unbacked = free;
        unbackedCount = kBlocks - used;
    }

  private:
    void* blockAt(std::size_t place) noexcept {
        return reinterpret_cast<std::byte*>(this) + place * kBlockSize;
    }

    std::size_t endOfIdle(std::size_t place) const noexcept {
        while (place < kPlaces && free.has(place) && !unbacked.has(place)) {
            ++place;
        }
        return place;
    }
};

BlockPool& BlockPool::shared() noexcept {
    static constinit BlockPool pool;
    return pool;
}

void* BlockPool::take() {
    const std::lock_guard lock(mutex_);
    Region* const region = first_ != nullptr ? first_ : addRegion();
    if (region->isEmpty()) {
        --emptyRegions_;
    }
    idleBlocks_ -= region->idle();
    void* const block = region->take();
    idleBlocks_ += region->idle();
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
    idleBlocks_ -= region->idle();
    region->giveBack(block);
    idleBlocks_ += region->idle();
    if (region->isEmpty()) {
        settleEmpty(region);
    } else if (idleBlocks_ > kKeptIdleBlocks) {
        discardIdleBlocks();
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
    const Pages pages = regions_ == 0 ? Pages::kSmall : Pages::kLarge;
    void* const memory = MemoryRegion::map(kRegionSize, pages);
    ++regions_;
    ++emptyRegions_;
    auto* const region = ::new (memory) Region(pages);
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

// Empty regions stand behind all others, or go: always where not all of their memory is there.
void BlockPool::settleEmpty(Region* region) noexcept {
    unlink(region);
    if (region->isThinned || emptyRegions_ == kKeptRegions) {
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

// For what is kept of large listings here and there, which would keep all of their memory. Half of
// the idle blocks stay, those that came back last; empty regions have none.
void BlockPool::discardIdleBlocks() noexcept {
    for (Region* region = last_; idleBlocks_ > kKeptIdleBlocks / 2; region = region->previous) {
        if (const std::size_t idle = region->idle(); idle > 0) {
            region->discardIdle();
            idleBlocks_ -= idle;
        }
    }
}

} // namespace NS
