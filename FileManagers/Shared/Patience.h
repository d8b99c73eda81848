#pragma once

#include <chrono>

namespace FileManagers {

// For how long a file manager may be kept waiting for answers: so long at one click, however many
// questions it asks for it.
//
// Clicks are told apart by the pauses between their questions. An extension that is as late as it
// may be leaves little to the questions after it, which one that is well does not need.
class Patience {
  public:
    using Clock = std::chrono::steady_clock;

    explicit Patience(std::chrono::milliseconds most) noexcept : most_(most) {}

    // For a question that is asked now.
    std::chrono::milliseconds left(Clock::time_point now) const noexcept;
    // It waited from then until then.
    void noteWait(Clock::time_point from, Clock::time_point until) noexcept;

  private:
    bool isSameClick(Clock::time_point now) const noexcept;

    std::chrono::milliseconds most_;
    Clock::duration waited_{};
    Clock::time_point last_;
};

} // namespace FileManagers
