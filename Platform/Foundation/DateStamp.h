#pragma once

#include "Platform/Foundation/ByteBuffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NS {

// Writes moments by a pattern of a DateFormatter, in place: what that does under its lock, for who
// has a lock already.
//
// A second is rendered once and kept. After the start text() allocates nothing. Not for use by two
// threads at once, nor while another thread changes the environment.
class DateStamp {
  public:
    static constexpr std::size_t kLongest = 64;

    // When a change of the TZ variable shows: at once, or with the next second. To look for it
    // takes longer than all the rest.
    enum class ZoneLook : std::uint8_t { kEachTime, kEachSecond };

    // Raises as a DateFormatter does.
    explicit DateStamp(std::string_view pattern);

    // The moment's text; until the next call.
    std::string_view text(double timeIntervalSinceReferenceDate, ZoneLook look) noexcept;
    // Appends it to a text of bytes. A change of the TZ variable shows with the next second.
    void append(ByteBuffer& out, double timeIntervalSinceReferenceDate);

  private:
    struct Piece {
        char field;        // its letter, 0 for a literal
        std::size_t width; // in characters
        std::string literal;
    };
    struct Fraction {
        std::size_t position;
        std::size_t digits;
    };
    class Parser;

    void keepSecond(std::int64_t secondsSince1970, ZoneLook look) noexcept;
    void renderSecond(std::int64_t secondsSince1970) noexcept;
    void writeFractions(char* text, std::int64_t microsecond) const noexcept;
    bool isZoneKept() const noexcept;
    void keepTimeZone(std::string_view timeZone) noexcept;

    static constexpr std::size_t kUnknown = static_cast<std::size_t>(-1);

    std::vector<Piece> pieces_;
    std::vector<Fraction> fractions_;

    // The second that was rendered last, and the zone that it was rendered for.
    std::array<char, kLongest> characters_{};
    std::size_t length_ = 0;
    std::int64_t second_ = 0;
    std::array<char, 64> timeZone_{};
    std::size_t timeZoneLength_ = kUnknown;
};

} // namespace NS
