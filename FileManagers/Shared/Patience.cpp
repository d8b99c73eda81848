#include "FileManagers/Shared/Patience.h"

#include <algorithm>

namespace FileManagers {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kPauseBetweenClicks{100};
constexpr milliseconds kLeast{20}; // two more of these are still less than a quarter of a second

} // namespace

bool Patience::isSameClick(Clock::time_point now) const noexcept {
    return now < last_ + kPauseBetweenClicks;
}

milliseconds Patience::left(Clock::time_point now) const noexcept {
    if (!isSameClick(now)) {
        return most_;
    }
    const auto left = std::chrono::floor<milliseconds>(most_ - waited_);
    return std::max(left, std::min(kLeast, most_));
}

void Patience::noteWait(Clock::time_point from, Clock::time_point until) noexcept {
    waited_ = isSameClick(from) ? waited_ + (until - from) : until - from;
    last_ = until;
}

} // namespace FileManagers
