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
        : storage_(std::move(other.storage_)), next_(std::exchange(other.next_, nullptr)),
          limit_(std::exchange(other.limit_, nullptr)) {}
    GrowingBuffer& operator=(GrowingBuffer&& other) noexcept {
        GrowingBuffer taken(std::move(other));
        storage_ = std::move(taken.storage_);
        next_ = taken.next_;
        limit_ = taken.limit_;
        return *this;
    }
    GrowingBuffer(const GrowingBuffer& other) {
        std::copy(other.begin(), other.end(), room(other.size()));
        extend(other.size());
    }
    GrowingBuffer& operator=(const GrowingBuffer&) = delete;
    ~GrowingBuffer() = default;

    const T* data() const noexcept { return values(); }
    std::size_t size() const noexcept { return static_cast<std::size_t>(next_ - values()); }
    T& operator[](std::size_t index) noexcept { return values()[index]; }
    const T& operator[](std::size_t index) const noexcept { return values()[index]; }
    const T* begin() const noexcept { return values(); }
    const T* end() const noexcept { return next_; }

    void add(T value) {
        if (next_ == limit_) [[unlikely]] {
            grow(1);
        }
        *next_++ = value;
    }

    // The place behind the last value, with room for this many more, whose contents are anything.
    // Valid until the next call.
    T* room(std::size_t count) {
        if (static_cast<std::size_t>(limit_ - next_) < count) [[unlikely]] {
            grow(count);
        }
        return next_;
    }
    // Takes so many values in that were written to the room.
    void extend(std::size_t count) noexcept { next_ += count; }

    // Begins anew, in the same memory.
    void clear() noexcept { next_ = values(); }
    // Bytes of memory that it holds.
    std::size_t heldBytes() const noexcept { return storage_.size(); }

  private:
    T* values() const noexcept { return static_cast<T*>(storage_.memory()); }

    // Seldom, and kept apart so that what is done often is short.
    [[gnu::noinline]] void grow(std::size_t count) {
        const std::size_t size = this->size();
        storage_.grow(size * sizeof(T), (size + count) * sizeof(T));
        next_ = values() + size;
        limit_ = values() + storage_.size() / sizeof(T);
    }

    GrowingStorage storage_;
    T* next_ = nullptr;  // behind the last value
    T* limit_ = nullptr; // of what there is room for
};

using ByteBuffer = GrowingBuffer<std::byte>;

} // namespace NS
