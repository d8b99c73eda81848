#include "Shell/HostAnswers.h"

#include <utility>

namespace Shell {

HostAnswers::HostAnswers(LatestRecord latest, Clock::time_point now) : latest_(std::move(latest)) {
    noteAsked(now);
    (void)refresh(now);
}

void HostAnswers::noteAsked(Clock::time_point now) {
    if (latest_ && !asked_) {
        asked_ = now;
    }
}

bool HostAnswers::refresh(Clock::time_point now) {
    const bool before = value_;
    if (latest_) {
        if (auto record = latest_(); record != seen_) {
            seen_ = std::move(record);
            asked_.reset();
            value_ = true;
        }
    }
    if (asked_ && now - *asked_ >= kPatience) {
        value_ = false;
    }
    return value_ != before;
}

std::optional<HostAnswers::Clock::time_point> HostAnswers::nextLook() const noexcept {
    if (!asked_ || !value_) {
        return std::nullopt;
    }
    return *asked_ + kPatience;
}

} // namespace Shell
