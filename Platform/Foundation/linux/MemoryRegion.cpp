#include "Platform/Foundation/MemoryRegion.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

// Each compiler says in its own way that it checks addresses.
#if defined(__SANITIZE_ADDRESS__)
#define QUORVANE_CHECKS_LEAKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORVANE_CHECKS_LEAKS
#endif
#endif

#ifdef QUORVANE_CHECKS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

namespace NS::MemoryRegion {

namespace {

// The leak checker looks at the allocator's storage only, and would take whatever is held from
// elsewhere for lost.
void showToLeakChecker([[maybe_unused]] const void* region, [[maybe_unused]] std::size_t size) {
#ifdef QUORVANE_CHECKS_LEAKS
    __lsan_register_root_region(region, size);
#endif
}

void hideFromLeakChecker([[maybe_unused]] const void* region, [[maybe_unused]] std::size_t size) {
#ifdef QUORVANE_CHECKS_LEAKS
    __lsan_unregister_root_region(region, size);
#endif
}

// That fails only where the system cannot keep account of one more gap.
void giveBack(void* memory, std::size_t size) noexcept {
    if (size > 0) {
        (void)munmap(memory, size);
    }
}

} // namespace

// The system gives any page's multiple: what is around a large page's goes back.
void* map(std::size_t size, Pages pages) {
    const std::size_t whole = size + kLargePage;
    void* const mapping =
        mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    auto* const begin = static_cast<std::byte*>(mapping);
    const std::size_t before =
        (kLargePage - reinterpret_cast<std::uintptr_t>(mapping) % kLargePage) % kLargePage;
    std::byte* const region = begin + before;
    giveBack(begin, before);
    giveBack(region + size, kLargePage - before);
    if (pages == Pages::kLarge) {
        (void)madvise(region, size, MADV_HUGEPAGE); // a wish only: some systems have none
    }
    showToLeakChecker(region, size);
    return region;
}

// To a place that begins at a large page's multiple, which the system would not choose by itself:
// large pages move as such only between two of these.
void* grow(void* region, std::size_t size, std::size_t newSize) {
    void* const place = map(newSize, Pages::kLarge);
    if (mremap(region, size, newSize, MREMAP_MAYMOVE | MREMAP_FIXED, place) == MAP_FAILED) {
        // Whether the place is still ours nobody tells, and another thread may have it now: it
        // stays, without any memory.
        hideFromLeakChecker(place, newSize);
        throw std::bad_alloc();
    }
    hideFromLeakChecker(region, size);
    return place;
}

// Otherwise the system may make one large page of the region again, and what was discarded with it.
void makePagesSmall(void* region, std::size_t size) noexcept {
    (void)madvise(region, size, MADV_NOHUGEPAGE); // a system without large pages refuses
}

void discard(void* part, std::size_t size) noexcept {
    (void)madvise(part, size, MADV_DONTNEED); // cannot fail for a region's own pages
}

void unmap(void* region, std::size_t size) noexcept {
    hideFromLeakChecker(region, size);
    giveBack(region, size);
}

} // namespace NS::MemoryRegion
