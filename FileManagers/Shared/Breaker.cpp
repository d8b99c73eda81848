#include "FileManagers/Shared/Breaker.h"

#include <algorithm>

namespace FileManagers {

void Breaker::noteTimeout(Clock::time_point now) noexcept {
    ++timeouts_;
    last_ = now;
}

bool Breaker::isOpen(bool isAnswering, Clock::time_point now) const noexcept {
    return timeouts_ > 0 && (!isAnswering || now < closing());
}

Breaker::Clock::duration Breaker::pause() const noexcept {
    constexpr std::uint32_t kMostDoublings = 5;
    return timeouts_ < 2 ? Clock::duration::zero()
                         : firstPause_ * (1U << std::min(timeouts_ - 2, kMostDoublings));
}

} // namespace FileManagers
