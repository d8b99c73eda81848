#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>

namespace NS {

// Blocks of one size, which come and go by the thousand, each at a multiple of that size. Any
// thread.
//
// A region of the system's memory holds some hundred blocks. When all of a region's blocks are back
// it goes back as well, except for a few that are kept for the next listing: memory that the system
// takes back and gives out again has to be cleared and faulted in anew. As much, and no more, is
// kept of blocks that lie idle between others in use.
class BlockPool {
  public:
    static constexpr std::size_t kBlockSize = 4096;
    // What is kept of empty regions at most: 32 MiB, what a hundred thousand records take.
    static constexpr std::size_t kKeptRegions = 16;
    // Of the blocks that came back in regions with others in use, how many keep their memory.
    static constexpr std::size_t kKeptIdleBlocks = kKeptRegions * 512;

    // The process's.
    static BlockPool& shared() noexcept;

    constexpr BlockPool() noexcept = default;
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    // A block, whose contents are anything. Throws std::bad_alloc when there is no memory.
    void* take();
    void giveBack(void* block) noexcept;
    // Has the system take back the empty regions that are kept.
    void giveBackEmptyRegions() noexcept;

    // How many regions are the system's no more, empty or not.
    std::size_t regionCount() const noexcept;

  private:
    struct Region;

    Region* addRegion();
    void link(Region* region) noexcept;
    void unlink(Region* region) noexcept;
    void settleEmpty(Region* region) noexcept;
    void remove(Region* region) noexcept;
    void discardIdleBlocks() noexcept;

    mutable std::mutex mutex_;
    // The regions that have blocks to give, those with others in use first.
    Region* first_ = nullptr;
    Region* last_ = nullptr;
    std::size_t regions_ = 0;
    std::size_t emptyRegions_ = 0;
    std::size_t idleBlocks_ = 0; // in regions with others in use, and with memory of their own
};

} // namespace NS
