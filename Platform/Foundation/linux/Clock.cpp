#include "Platform/Foundation/Clock.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <ctime>

namespace NS {

namespace {

// As long as a sleep gets: three centuries, well within what the kernel counts.
constexpr double kLongestSleep = 1e10;

class SystemClock final : public Clock {
  public:
    double absoluteTime() override {
        timespec now{};
        (void)::clock_gettime(CLOCK_REALTIME, &now); // cannot fail for this clock
        return static_cast<double>(now.tv_sec) - kTimeIntervalSince1970 +
               static_cast<double>(now.tv_nsec) * 1e-9;
    }

    void sleep(double seconds) override {
        if (!(seconds > 0)) {
            return;
        }
        const double bounded = std::min(seconds, kLongestSleep);
        const double whole = std::floor(bounded);
        timespec rest{static_cast<time_t>(whole), static_cast<long>((bounded - whole) * 1e9)};
        while (::nanosleep(&rest, &rest) == -1 && errno == EINTR) {
        }
    }
};

// The system's clock stays usable while the process ends.
SystemClock& systemClock() {
    static SystemClock& clock = *new SystemClock;
    return clock;
}

std::atomic<Clock*> replacement{nullptr};

} // namespace

Clock& Clock::current() noexcept {
    Clock* const clock = replacement.load();
    return clock != nullptr ? *clock : systemClock();
}

Clock* Clock::replace(Clock* clock) noexcept {
    return replacement.exchange(clock);
}

} // namespace NS
