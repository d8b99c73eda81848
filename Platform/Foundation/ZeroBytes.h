#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace NS {

// How many bytes are looked at together.
inline constexpr std::size_t kZeroBytesSpan = 64;

// Bit i tells whether byte i of the 64 at an address is zero.
inline std::uint64_t zeroBytesOneByOne(const char* bytes) noexcept {
    std::uint64_t found = 0;
    for (std::size_t i = 0; i < kZeroBytesSpan; ++i) {
        found |= std::uint64_t{bytes[i] == '\0'} << i;
    }
    return found;
}

// The same, as fast as the processor allows.
#if defined(__SSE2__)
inline std::uint64_t zeroBytesAt(const char* bytes) noexcept {
    const auto ofSixteen = [bytes](std::size_t first) {
        const __m128i some = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + first));
        const int bits = _mm_movemask_epi8(_mm_cmpeq_epi8(some, _mm_setzero_si128()));
        return std::uint64_t{static_cast<std::uint16_t>(bits)} << first;
    };
    return ofSixteen(0) | ofSixteen(16) | ofSixteen(32) | ofSixteen(48);
}
#else
inline std::uint64_t zeroBytesAt(const char* bytes) noexcept {
    return zeroBytesOneByOne(bytes);
}
#endif

// Finds the zero bytes of a text one after another. To search for each from the one before would
// make each search wait for that; here the processor is ahead.
class ZeroBytes {
  public:
    // The text has to stay.
    explicit ZeroBytes(std::string_view text) noexcept : text_(text), found_(foundIn(text)) {}

    // Where the next is; npos when there is none any more.
    std::size_t next() noexcept {
        while (found_ == 0) {
            if (text_.size() - begin_ <= kZeroBytesSpan) {
                return std::string_view::npos;
            }
            begin_ += kZeroBytesSpan;
            found_ = foundIn(text_.substr(begin_));
        }
        const std::size_t place = begin_ + static_cast<std::size_t>(std::countr_zero(found_));
        found_ &= found_ - 1;
        return place;
    }

  private:
    // At the beginning of a text, of any length.
    static std::uint64_t foundIn(std::string_view text) noexcept {
        return text.size() >= kZeroBytesSpan ? zeroBytesAt(text.data()) : foundInEnd(text);
    }
    // Kept out of the loop that walks through a long text.
    [[gnu::noinline]] static std::uint64_t foundInEnd(std::string_view text) noexcept {
        std::array<char, kZeroBytesSpan> padded;
        padded.fill('.');
        std::ranges::copy(text, padded.begin());
        return zeroBytesAt(padded.data());
    }

    std::string_view text_;
    std::size_t begin_ = 0; // of what is being looked at
    std::uint64_t found_;
};

} // namespace NS
