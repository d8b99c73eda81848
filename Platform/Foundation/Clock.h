#pragma once

namespace NS {

// Seconds from 1970-01-01 to 2001-01-01, both at midnight UTC: from the zero of the system's clock
// to the zero of dates.
inline constexpr double kTimeIntervalSince1970 = 978307200.0;

// Where the time comes from, so that a test can move it. Any thread.
class Clock {
  public:
    virtual ~Clock() = default;

    // Seconds since 2001-01-01 00:00:00 UTC. Follows the system's clock, also when it is set back.
    virtual double absoluteTime() = 0;
    // Blocks the calling thread for that many seconds; not at all for zero or less.
    virtual void sleep(double seconds) = 0;

    // The clock in use; the system's own unless a test put another in its place.
    static Clock& current() noexcept;
    // Puts a clock in place, null for the system's own, and returns the one before it.
    static Clock* replace(Clock* clock) noexcept;
};

// Puts a clock in place for as long as it lives. For tests.
class ScopedClock {
  public:
    explicit ScopedClock(Clock& clock) noexcept : previous_(Clock::replace(&clock)) {}
    ~ScopedClock() { Clock::replace(previous_); }
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;

  private:
    Clock* previous_;
};

// Seconds since 2001-01-01 00:00:00 UTC.
inline double absoluteTimeGetCurrent() {
    return Clock::current().absoluteTime();
}

// Blocks the calling thread, its run loop included, for that many seconds.
inline void sleepForTimeInterval(double seconds) {
    Clock::current().sleep(seconds);
}

} // namespace NS
