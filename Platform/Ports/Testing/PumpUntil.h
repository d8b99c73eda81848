#pragma once

#include "Platform/Ports/RunLoop.h"

#include <functional>

namespace NS {

// Runs the current run loop until a condition holds; false when it still does not after the limit,
// in seconds. For tests: a condition that another process brings about is looked at every 20 ms.
inline bool pumpUntil(const std::function<bool()>& condition, double limit = 60.0) {
    const auto loop = RunLoop::currentRunLoop();
    const auto end = Date::dateWithTimeIntervalSinceNow(limit);
    while (!condition()) {
        if (end->compare(*Date::date()) < 0) {
            return false;
        }
        (void)loop->runMode_beforeDate(RunLoopMode::kDefault,
                                       *Date::dateWithTimeIntervalSinceNow(0.02));
    }
    return true;
}

} // namespace NS
