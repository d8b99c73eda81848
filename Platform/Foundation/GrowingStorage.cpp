#include "Platform/Foundation/GrowingStorage.h"

#include "Platform/Foundation/MemoryRegion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace NS {

namespace {

constexpr std::size_t kPage = MemoryRegion::kLargePage;
constexpr std::size_t kSmallest = 512;
constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max() / 4;

bool isLarge(std::size_t size) noexcept {
    return size >= kPage;
}

std::size_t sizeFor(std::size_t size) noexcept {
    return isLarge(size) ? (size + kPage - 1) / kPage * kPage : std::max(size, kSmallest);
}

void giveBack(void* memory, std::size_t size) noexcept {
    if (isLarge(size)) {
        MemoryRegion::unmap(memory, size);
    } else {
        std::free(memory);
    }
}

void* reallocated(void* memory, std::size_t size) {
    void* const grown = std::realloc(memory, size);
    if (grown == nullptr) {
        throw std::bad_alloc();
    }
    return grown;
}

void* movedToRegion(void* memory, std::size_t used, std::size_t size) {
    void* const region = MemoryRegion::map(size, MemoryRegion::Pages::kLarge);
    if (used > 0) {
        std::memcpy(region, memory, used);
    }
    std::free(memory);
    return region;
}

} // namespace

GrowingStorage::~GrowingStorage() {
    giveBack(memory_, size_);
}

void GrowingStorage::grow(std::size_t used, std::size_t least) {
    if (least > kMost) {
        throw std::bad_alloc();
    }
    const std::size_t size = sizeFor(std::max(size_ * 2, least));
    if (isLarge(size_)) {
        memory_ = MemoryRegion::grow(memory_, size_, size);
    } else if (isLarge(size)) {
        memory_ = movedToRegion(memory_, used, size);
    } else {
        memory_ = reallocated(memory_, size);
    }
    size_ = size;
}

} // namespace NS
