#pragma once

#include <cstddef>

// Large pieces of memory straight from the system, for what manages its own storage.
namespace NS::MemoryRegion {

// The system's large pages, in which a region comes wherever there are any: it is faulted in at
// once rather than in hundreds of small steps, each of which costs as much as making ten objects.
inline constexpr std::size_t kLargePage = std::size_t{2} * 1024 * 1024;

enum class Pages : unsigned char { kSmall, kLarge };

// Cleared memory of this size, a multiple of kLargePage, that begins at such a multiple. Throws
// std::bad_alloc when there is none. Small pages take memory only as they are used.
void* map(std::size_t size, Pages pages);
// A region in large pages with more behind it, cleared as well. Its pages move, and are not copied.
// Throws std::bad_alloc, and leaves the region as it is.
void* grow(void* region, std::size_t size, std::size_t newSize);
// Leaves the memory of parts of a region to the system: first the region's pages become small ones,
// then parts of it, whole multiples of 4 KiB, lose what is in them. They can be used again,
// cleared.
void makePagesSmall(void* region, std::size_t size) noexcept;
void discard(void* part, std::size_t size) noexcept;
void unmap(void* region, std::size_t size) noexcept;

} // namespace NS::MemoryRegion
