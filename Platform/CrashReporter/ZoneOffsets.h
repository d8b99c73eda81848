#pragma once

#include "Platform/Foundation/LocalTime.h"

#include <array>
#include <cstddef>
#include <cstdint>

// The time of day where the C library cannot be asked for it, as in a signal handler.
namespace NS {

// The moment of a clock that is ahead of UTC by an offset, in seconds. Years up to 9999.
LocalTime civilTime(std::int64_t secondsSince1970, std::int32_t offset) noexcept;

// How far the user's clock is ahead of UTC, in seconds, with the changes of it to come.
class ZoneOffsets {
  public:
    // Asks the C library, for the 400 days from a moment on: eight changes at the most, where a
    // year has four in a place with both a summer time and a month of fasting.
    static ZoneOffsets from(std::int64_t secondsSince1970) noexcept;

    std::int32_t at(std::int64_t secondsSince1970) const noexcept;

  private:
    struct Change {
        // From here on, in seconds since 1970.
        std::int64_t moment;
        std::int32_t offset;
    };

    std::int32_t first_ = 0;
    std::array<Change, 8> changes_{};
    std::size_t count_ = 0;
};

} // namespace NS
