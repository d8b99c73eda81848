#pragma once

#include <cstdint>

namespace NS {

// True when `count` elements of `width` bytes (not 0), beginning at `offset`, end at `end` or
// before. The one test that stands before every read at a place that a file or message names; it
// cannot overflow, whatever the four numbers are.
constexpr bool rangeFits(std::uint64_t offset, std::uint64_t count, std::uint64_t width,
                         std::uint64_t end) noexcept {
    // No width of the callers' is near 2^32; a product that cannot overflow spares a division.
    const std::uint64_t left = end - offset;
    const bool isSmall = (count | width) >> 32U == 0;
    return offset <= end && (isSmall ? count * width <= left : count <= left / width);
}

} // namespace NS
