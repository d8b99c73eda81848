#include "Platform/Foundation/LocalTime.h"

#include <cstdlib>
#include <ctime>

namespace NS {

namespace {

// In the zone of the last look.
tm localTimeOf(std::int64_t secondsSince1970) noexcept {
    const auto moment = static_cast<time_t>(secondsSince1970);
    tm local{};
    (void)::localtime_r(&moment, &local); // fails only for years beyond an int
    return local;
}

} // namespace

LocalTime localTime(std::int64_t secondsSince1970) noexcept {
    lookAtTimeZone();
    const tm local = localTimeOf(secondsSince1970);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec};
}

void lookAtTimeZone() noexcept {
    // localtime_r() alone would keep to the zone that it saw first.
    ::tzset();
}

std::int32_t offsetFromUtc(std::int64_t secondsSince1970) noexcept {
    return static_cast<std::int32_t>(localTimeOf(secondsSince1970).tm_gmtoff);
}

std::string_view timeZoneVariable() noexcept {
    const char* const zone = std::getenv("TZ");
    // Not set is the machine's zone, set to nothing is UTC; no zone is named by a line feed.
    return zone == nullptr ? std::string_view("\n") : std::string_view(zone);
}

} // namespace NS
