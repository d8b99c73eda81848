#pragma once

#include "Platform/Foundation/GrowingStorage.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace NS {

// Values that are put together from the front to the back. Unlike a vector's, they are not cleared
// before they are written, and many of them move to a larger place without being copied.
template <class T>
class GrowingBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    GrowingBuffer() noexcept = default;
    GrowingBuffer(GrowingBuffer&& other) noexcept
        : storage_(std::move(other.storage_)), size_(std::exchange(other.size_, 0)) {}
    GrowingBuffer& operator=(GrowingBuffer&& other) noexcept {
        GrowingBuffer taken(std::move(other));
        storage_ = std::move(taken.storage_);
        size_ = taken.size_;
        return *this;
    }
    GrowingBuffer(const GrowingBuffer& other) {
        std::copy(other.begin(), other.end(), room(other.size()));
        extend(other.size());
    }
    GrowingBuffer& operator=(const GrowingBuffer&) = delete;
    ~GrowingBuffer() = default;

    const T* data() const noexcept { return values(); }
    std::size_t size() const noexcept { return size_; }
    T& operator[](std::size_t index) noexcept { return values()[index]; }
    const T& operator[](std::size_t index) const noexcept { return values()[index]; }
    const T* begin() const noexcept { return values(); }
    const T* end() const noexcept { return values() + size_; }

    void add(T value) {
        *room(1) = value;
        ++size_;
    }

    // The place behind the last value, with room for this many more, whose contents are anything.
    // Valid until the next call.
    T* room(std::size_t count) {
        if (storage_.size() / sizeof(T) - size_ < count) [[unlikely]] {
            storage_.grow(size_ * sizeof(T), (size_ + count) * sizeof(T));
        }
        return values() + size_;
    }
    // Takes so many values in that were written to the room.
    void extend(std::size_t count) noexcept { size_ += count; }

    // Begins anew, in the same memory.
    void clear() noexcept { size_ = 0; }
    // Bytes of memory that it holds.
    std::size_t heldBytes() const noexcept { return storage_.size(); }

  private:
    T* values() const noexcept { return static_cast<T*>(storage_.memory()); }

    GrowingStorage storage_;
    std::size_t size_ = 0;
};

using ByteBuffer = GrowingBuffer<std::byte>;

} // namespace NS
