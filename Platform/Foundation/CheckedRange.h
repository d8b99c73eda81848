#pragma once

#include <cstdint>

namespace NS {

// True when `count` elements of `width` bytes (not 0), beginning at `offset`, end at `end` or
// before. The one test that stands before every read at a place that a file or message names; it
// cannot overflow, whatever the four numbers are.
constexpr bool rangeFits(std::uint64_t offset, std::uint64_t count, std::uint64_t width,
                         std::uint64_t end) noexcept {
    return offset <= end && count <= (end - offset) / width;
}

} // namespace NS
