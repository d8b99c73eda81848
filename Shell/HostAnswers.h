#pragma once

#include "Platform/Foundation/Object.h"

#include <chrono>
#include <functional>
#include <optional>

namespace Shell {

// What an extension sees of its host. Without a function there is nothing to miss. Both are quick.
struct Host {
    // Whether its process is there.
    std::function<bool()> isThere;
    // The record that it sent last; nil before the first. Records are replaced, not changed.
    std::function<NS::RefPtr<NS::Object>()> latestRecord;
};

// Whether the host is there, and answers when it is asked for its record. Messages to a host are
// sent and forgotten, so that this is all there is to see of one that has stopped.
//
// It is taken to have been asked when this is made. Main thread.
class HostAnswers {
  public:
    using Clock = std::chrono::steady_clock;

    // How long an answer may take.
    static constexpr Clock::duration kPatience = std::chrono::seconds(3);

    HostAnswers(Host host, Clock::time_point now);

    // It is being asked; what was asked before and not answered yet counts from then.
    void noteAsked(Clock::time_point now);
    // Looks whether it is there and has answered; true when value() is another than before.
    bool refresh(Clock::time_point now);

    bool value() const noexcept { return value_; }
    // When to refresh() also if nothing happens; none while nothing is to be missed.
    std::optional<Clock::time_point> nextLook() const noexcept;

  private:
    Host host_;
    NS::RefPtr<NS::Object> seen_; // kept, as another one could get its address
    std::optional<Clock::time_point> asked_;
    bool value_ = true;
};

} // namespace Shell
