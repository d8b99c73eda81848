#pragma once

#include "Platform/Foundation/MemoryRegion.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>

namespace NS {

// As many values as are said once, all of whose bytes are zero at first. Unlike a vector's, those
// of a large array are cleared by the system only, and come in its large pages.
template <class T>
class ClearedArray {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

  public:
    ClearedArray() noexcept = default;
    ~ClearedArray() { clear(); }
    ClearedArray(const ClearedArray&) = delete;
    ClearedArray& operator=(const ClearedArray&) = delete;

    // Takes the place of what was there. Throws std::bad_alloc.
    void reset(std::size_t count) {
        clear();
        if (count > kMost) {
            throw std::bad_alloc();
        }
        values_ = static_cast<T*>(
            isLarge(count) ? MemoryRegion::map(sizeInPages(count), MemoryRegion::Pages::kLarge)
                           : allocated(count));
        size_ = count;
    }

    std::size_t size() const noexcept { return size_; }
    T& operator[](std::size_t index) noexcept { return values_[index]; }
    const T& operator[](std::size_t index) const noexcept { return values_[index]; }

  private:
    static constexpr std::size_t kMost = static_cast<std::size_t>(-1) / sizeof(T) / 2;

    static bool isLarge(std::size_t count) noexcept {
        return count * sizeof(T) >= MemoryRegion::kLargePage;
    }
    static std::size_t sizeInPages(std::size_t count) noexcept {
        const std::size_t page = MemoryRegion::kLargePage;
        return (count * sizeof(T) + page - 1) / page * page;
    }
    static void* allocated(std::size_t count) {
        void* const values = std::calloc(count + 1, sizeof(T)); // of none it could give null
        if (values == nullptr) {
            throw std::bad_alloc();
        }
        return values;
    }

    void clear() noexcept {
        if (isLarge(size_)) {
            MemoryRegion::unmap(values_, sizeInPages(size_));
        } else {
            std::free(values_);
        }
        values_ = nullptr;
        size_ = 0;
    }

    T* values_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace NS
