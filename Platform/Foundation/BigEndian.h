#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Numbers as formats hold them: most significant byte first, in as many bytes as it takes.
namespace NS::BigEndian {

inline std::uint64_t swapped(std::uint64_t value) noexcept {
    return std::endian::native == std::endian::little ? __builtin_bswap64(value) : value;
}

// What tells numbers of one width (1 to 8 bytes) from others, for who reads many.
constexpr unsigned shiftOf(unsigned width) noexcept {
    return 64U - 8U * width;
}
inline std::uint64_t loadShifted(const std::byte* bytes, unsigned shift) noexcept {
    std::uint64_t raw;
    std::memcpy(&raw, bytes, sizeof raw);
    return swapped(raw) >> shift;
}

// The number of `width` bytes (1 to 8) at `bytes`. Reads eight bytes in any case: the caller knows
// that they are there.
inline std::uint64_t load(const std::byte* bytes, unsigned width) noexcept {
    return loadShifted(bytes, shiftOf(width));
}

// Writes the lowest `width` bytes (1 to 8) of the number.
inline void store(std::byte* target, std::uint64_t value, unsigned width) noexcept {
    const std::uint64_t raw = swapped(value << (64U - 8U * width));
    std::memcpy(target, &raw, width);
}

// The same where eight bytes may be written: those after the number become zero. Faster, for a
// writer that goes on right behind it.
inline void storeAhead(std::byte* target, std::uint64_t value, unsigned width) noexcept {
    const std::uint64_t raw = swapped(value << (64U - 8U * width));
    std::memcpy(target, &raw, sizeof raw);
}

// How many bytes the number takes, at least one.
constexpr unsigned widthOf(std::uint64_t value) noexcept {
    return value == 0 ? 1U : (static_cast<unsigned>(std::bit_width(value)) + 7U) / 8U;
}

} // namespace NS::BigEndian
