#include "Platform/Foundation/Clock.h"

#include <atomic>
#include <cerrno>
#include <cmath>
#include <ctime>

namespace NS {

namespace {

// Seconds from 1970-01-01 to 2001-01-01, both at midnight UTC.
constexpr double kReferenceDate = 978307200.0;

class SystemClock final : public Clock {
  public:
    double absoluteTime() override {
        timespec now{};
        (void)::clock_gettime(CLOCK_REALTIME, &now); // cannot fail for this clock
        return static_cast<double>(now.tv_sec) - kReferenceDate +
               static_cast<double>(now.tv_nsec) * 1e-9;
    }

    void sleep(double seconds) override {
        if (!(seconds > 0)) {
            return;
        }
        const double whole = std::floor(seconds);
        timespec rest{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
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
