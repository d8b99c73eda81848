#pragma once

#include <cstdint>
#include <string_view>

// The user's time zone, as the C library knows it. Any thread, as long as none changes the
// environment at that moment.
namespace NS {

// A moment on the user's calendar and clock.
struct LocalTime {
    int year;
    int month; // from 1
    int day;   // from 1
    int hour;
    int minute;
    int second;
};

// The moment of whole seconds since 1970-01-01 00:00:00 UTC. Looks at the machine's time zone again
// each time, which costs a system call.
LocalTime localTime(std::int64_t secondsSince1970) noexcept;

// The look alone; and, without another one, how far the user's clock is ahead of UTC at a moment,
// in seconds.
void lookAtTimeZone() noexcept;
std::int32_t offsetFromUtc(std::int64_t secondsSince1970) noexcept;

// What this process's environment says of the time zone; two equal texts mean the same zone, unless
// the machine's own was changed. Valid until the environment changes.
std::string_view timeZoneVariable() noexcept;

} // namespace NS
