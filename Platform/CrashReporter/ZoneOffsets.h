#pragma once

#include "Platform/Foundation/LocalTime.h"

#include <cstdint>

// The time of day where the C library cannot be asked for it, as in a signal handler.
namespace NS {

// The moment of a clock that is ahead of UTC by an offset, in seconds. Years up to 9999.
LocalTime civilTime(std::int64_t secondsSince1970, std::int32_t offset) noexcept;

// How far the user's clock is ahead of UTC, in seconds, with the next change of it.
struct ZoneOffsets {
    std::int32_t first;
    std::int32_t second;
    // From here on the second holds, in seconds since 1970.
    std::int64_t change;

    // Asks the C library, for the 400 days from a moment on.
    static ZoneOffsets from(std::int64_t secondsSince1970) noexcept;

    std::int32_t at(std::int64_t secondsSince1970) const noexcept {
        return secondsSince1970 < change ? first : second;
    }
};

} // namespace NS
