#include "Shell/HostAnswers.h"

#include <utility>

namespace Shell {

HostAnswers::HostAnswers(Host host, Clock::time_point now) : host_(std::move(host)) {
    noteAsked(now);
    (void)refresh(now);
}

void HostAnswers::noteAsked(Clock::time_point now) {
    if (host_.latestRecord && !asked_) {
        asked_ = now;
    }
}

bool HostAnswers::refresh(Clock::time_point now) {
    if (host_.latestRecord) {
        if (auto record = host_.latestRecord(); record != seen_) {
            seen_ = std::move(record);
            asked_.reset();
        }
    }
    const bool isThere = !host_.isThere || host_.isThere();
    const bool isLate = asked_ && now - *asked_ >= kPatience;
    const bool before = std::exchange(value_, isThere && !isLate);
    return value_ != before;
}

std::optional<HostAnswers::Clock::time_point> HostAnswers::nextLook() const noexcept {
    if (!asked_ || !value_) {
        return std::nullopt;
    }
    return *asked_ + kPatience;
}

} // namespace Shell
