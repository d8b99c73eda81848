#pragma once

#include "Platform/Foundation/Clock.h"

#include <atomic>

namespace NS {

// A clock that a test sets. Sleeping moves it on and takes no time. Any thread.
class ManualClock final : public Clock {
  public:
    explicit ManualClock(double now) noexcept : now_(now) {}

    double absoluteTime() override { return now_.fetch_add(tick_); }
    void sleep(double seconds) override { now_ += seconds; }

    void set(double now) noexcept { now_ = now; }
    // How far each reading moves it on.
    void setTick(double seconds) noexcept { tick_ = seconds; }

  private:
    std::atomic<double> now_;
    std::atomic<double> tick_{0};
};

} // namespace NS
