#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace Tests {

// How many descriptors the process has open.
inline std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                      std::filesystem::directory_iterator()));
}

// Leaves the process no descriptor to open while it lives.
class NoDescriptors {
  public:
    NoDescriptors() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit few{64, before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
        for (int file = ::dup(0); file >= 0; file = ::dup(0)) {
            files_.emplace_back(file);
        }
    }
    ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

  private:
    rlimit before_{};
    std::vector<NS::FileDescriptor> files_;
};

} // namespace Tests
