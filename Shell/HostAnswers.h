#pragma once

#include "Platform/Foundation/Object.h"

#include <chrono>
#include <functional>
#include <optional>

namespace Shell {

// The record that the host sent last; nil before the first. Records are replaced, not changed.
using LatestRecord = std::function<NS::RefPtr<NS::Object>()>;

// Whether the host answers when it is asked for its record. Messages to a host are sent and
// forgotten, so that this is all there is to see of one that has stopped or gone.
//
// It is taken to have been asked when this is made. Main thread.
class HostAnswers {
  public:
    using Clock = std::chrono::steady_clock;

    // How long an answer may take.
    static constexpr Clock::duration kPatience = std::chrono::seconds(3);

    // Without a record to look at it always answers.
    HostAnswers(LatestRecord latest, Clock::time_point now);

    // It is being asked; what was asked before and not answered yet counts from then.
    void noteAsked(Clock::time_point now);
    // Looks whether it has answered; true when value() is another than before.
    bool refresh(Clock::time_point now);

    bool value() const noexcept { return value_; }
    // When to refresh() also if nothing happens; none while nothing is to be missed.
    std::optional<Clock::time_point> nextLook() const noexcept;

  private:
    LatestRecord latest_;
    NS::RefPtr<NS::Object> seen_; // kept, as another one could get its address
    std::optional<Clock::time_point> asked_;
    bool value_ = true;
};

} // namespace Shell
