#pragma once

#include <algorithm>
#include <sys/resource.h>

namespace Tests {

// Lets the process have so many files open, for as long as it lives.
class ScopedOpenFiles {
  public:
    explicit ScopedOpenFiles(rlim_t most) {
        (void)::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit limit{std::min(most, before_.rlim_max), before_.rlim_max};
        (void)::setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~ScopedOpenFiles() { (void)::setrlimit(RLIMIT_NOFILE, &before_); }
    ScopedOpenFiles(const ScopedOpenFiles&) = delete;
    ScopedOpenFiles& operator=(const ScopedOpenFiles&) = delete;

  private:
    rlimit before_{};
};

} // namespace Tests
