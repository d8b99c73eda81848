#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace NS {

// Bytes that are put together from the front to the back. Unlike a vector's, they are not cleared
// before they are written, and many of them move to a larger place without being copied, since the
// machine moves their pages.
class ByteBuffer {
  public:
    ByteBuffer() noexcept = default;
    ByteBuffer(ByteBuffer&& other) noexcept { swap(other); }
    ByteBuffer& operator=(ByteBuffer&& other) noexcept {
        ByteBuffer(std::move(other)).swap(*this);
        return *this;
    }
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer() { std::free(bytes_); }

    const std::byte* data() const noexcept { return bytes_; }
    std::size_t size() const noexcept { return size_; }
    const std::byte& operator[](std::size_t index) const noexcept { return bytes_[index]; }
    const std::byte* begin() const noexcept { return bytes_; }
    const std::byte* end() const noexcept { return bytes_ + size_; }

    // The place behind the last byte, with room for this many more, whose contents are anything.
    // Valid until the next call.
    std::byte* room(std::size_t count) {
        if (capacity_ - size_ < count) [[unlikely]] {
            grow(count);
        }
        return bytes_ + size_;
    }
    // Takes so many bytes in that were written to the room.
    void extend(std::size_t count) noexcept { size_ += count; }

  private:
    static constexpr std::size_t kFirstCapacity = 512;

    void grow(std::size_t count) {
        const std::size_t capacity = std::max({capacity_ * 2, size_ + count, kFirstCapacity});
        void* const bytes = std::realloc(bytes_, capacity);
        if (bytes == nullptr) {
            throw std::bad_alloc();
        }
        bytes_ = static_cast<std::byte*>(bytes);
        capacity_ = capacity;
    }

    void swap(ByteBuffer& other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    std::byte* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace NS
