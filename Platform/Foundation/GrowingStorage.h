#pragma once

#include <cstddef>
#include <utility>

namespace NS {

// Memory that keeps what stands in it when it grows, and is not cleared before it is written.
//
// From a large page on it comes from the system directly, in its large pages, and is moved without
// being copied: to fault it in by small pages takes as long as to write what stands in it. What was
// never written to takes no memory, but for the rest of the last large page.
class GrowingStorage {
  public:
    GrowingStorage() noexcept = default;
    GrowingStorage(GrowingStorage&& other) noexcept
        : memory_(std::exchange(other.memory_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    GrowingStorage& operator=(GrowingStorage&& other) noexcept {
        std::swap(memory_, other.memory_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~GrowingStorage();

    void* memory() const noexcept { return memory_; }
    std::size_t size() const noexcept { return size_; }

    // Makes it twice as large at least, and no smaller than that many bytes. Its first `used` bytes
    // stay, mostly elsewhere. Throws std::bad_alloc, and is as before.
    void grow(std::size_t used, std::size_t least);

  private:
    void* memory_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace NS
