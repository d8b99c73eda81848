#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

namespace NS {

// Values that are put together from the front to the back. Unlike a vector's, they are not cleared
// before they are written, and many of them move to a larger place without being copied, since the
// machine moves their pages.
template <class T>
class GrowingBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    GrowingBuffer() noexcept = default;
    GrowingBuffer(GrowingBuffer&& other) noexcept { swap(other); }
    GrowingBuffer& operator=(GrowingBuffer&& other) noexcept {
        GrowingBuffer(std::move(other)).swap(*this);
        return *this;
    }
    GrowingBuffer(const GrowingBuffer& other) {
        std::copy(other.begin(), other.end(), room(other.size()));
        extend(other.size());
    }
    GrowingBuffer& operator=(const GrowingBuffer&) = delete;
    ~GrowingBuffer() { std::free(values_); }

    const T* data() const noexcept { return values_; }
    std::size_t size() const noexcept { return size_; }
    T& operator[](std::size_t index) noexcept { return values_[index]; }
    const T& operator[](std::size_t index) const noexcept { return values_[index]; }
    const T* begin() const noexcept { return values_; }
    const T* end() const noexcept { return values_ + size_; }

    void add(T value) {
        *room(1) = value;
        ++size_;
    }

    // The place behind the last value, with room for this many more, whose contents are anything.
    // Valid until the next call.
    T* room(std::size_t count) {
        if (capacity_ - size_ < count) [[unlikely]] {
            grow(count);
        }
        return values_ + size_;
    }
    // Takes so many values in that were written to the room.
    void extend(std::size_t count) noexcept { size_ += count; }

  private:
    static constexpr std::size_t kFirstCapacity = 512 / sizeof(T);

    void grow(std::size_t count) {
        const std::size_t capacity = std::max({capacity_ * 2, size_ + count, kFirstCapacity});
        void* const values = std::realloc(values_, capacity * sizeof(T));
        if (values == nullptr) {
            throw std::bad_alloc();
        }
        values_ = static_cast<T*>(values);
        capacity_ = capacity;
    }

    void swap(GrowingBuffer& other) noexcept {
        std::swap(values_, other.values_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    T* values_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

using ByteBuffer = GrowingBuffer<std::byte>;

} // namespace NS
