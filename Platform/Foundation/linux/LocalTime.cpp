#include "Platform/Foundation/LocalTime.h"

#include <cstdlib>
#include <ctime>

namespace NS {

LocalTime localTime(std::int64_t secondsSince1970) noexcept {
    // localtime_r() alone would keep to the zone that it saw first.
    ::tzset();
    return localTimeInZoneOfLastLook(secondsSince1970);
}

LocalTime localTimeInZoneOfLastLook(std::int64_t secondsSince1970) noexcept {
    const auto moment = static_cast<time_t>(secondsSince1970);
    tm local{};
    (void)::localtime_r(&moment, &local); // fails only for years beyond an int
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec};
}

std::string_view timeZoneVariable() noexcept {
    const char* const zone = std::getenv("TZ");
    // Not set is the machine's zone, set to nothing is UTC; no zone is named by a line feed.
    return zone == nullptr ? std::string_view("\n") : std::string_view(zone);
}

} // namespace NS
