#pragma once

#include <unistd.h>
#include <utility>

namespace NS {

// Owns an open file descriptor, or none.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~FileDescriptor() { reset(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    // Gives the descriptor up without closing it.
    int release() noexcept { return std::exchange(descriptor_, -1); }
    // Closes what it owns and takes over another.
    void reset(int descriptor = -1) noexcept {
        if (descriptor_ >= 0) {
            (void)::close(descriptor_); // the descriptor is gone, whatever close() says
        }
        descriptor_ = descriptor;
    }

  private:
    int descriptor_ = -1;
};

} // namespace NS
