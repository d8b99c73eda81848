#pragma once

#include <chrono>
#include <cstdint>

namespace FileManagers {

// Keeps a file manager from waiting twice for an extension that is stopped.
//
// It opens with a time-out, and no question is asked while it is open. After the first time-out it
// closes as soon as the extension is known to take in messages again, which costs nobody a wait.
// One that takes them in but is late for its answers again and again is left alone for longer each
// time.
class Breaker {
  public:
    using Clock = std::chrono::steady_clock;

    // For how long it stays open after two time-outs; up to 32 times as long after more.
    explicit Breaker(Clock::duration firstPause) noexcept : firstPause_(firstPause) {}

    // What became of a question or a command.
    void noteTimeout(Clock::time_point now) noexcept;
    void noteAnswer() noexcept { timeouts_ = 0; }
    // Another extension, of which nothing is known.
    void reset() noexcept { timeouts_ = 0; }

    // Whether to ask nothing now; isAnswering is what the client says of the extension.
    bool isOpen(bool isAnswering, Clock::time_point now) const noexcept;
    // When it closes, unless something is known before: what the file manager kept may then be
    // asked for again.
    Clock::time_point closing() const noexcept { return last_ + pause(); }

  private:
    Clock::duration pause() const noexcept;

    Clock::duration firstPause_;
    std::uint32_t timeouts_ = 0; // one after the other
    Clock::time_point last_;
};

} // namespace FileManagers
