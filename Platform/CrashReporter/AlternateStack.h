#pragma once

#include <cstddef>

namespace NS {

// A stack for what happens on the calling thread after its own is used up: a crash report needs
// one. The main thread has one from startCrashReporter() on; a further thread makes one first thing
// and keeps it while it runs. Goes on the thread that made it, which then has again what it had.
class AlternateStack {
  public:
    // Without memory the thread does without.
    AlternateStack() noexcept;
    ~AlternateStack();
    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;

    static constexpr std::size_t kBytes = std::size_t{64} << 10U;

  private:
    void* memory_;
    void* earlier_ = nullptr;
    std::size_t earlierBytes_ = 0;
};

} // namespace NS
