#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/String.h"

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace NS {

// Writes dates by a pattern, in local time and without the user's language.
//
// The letters of a pattern are fields of the Unicode date notation (UTS #35): yyyy, MM, dd, HH, mm,
// ss, and S, SS or SSS for the tenths, hundredths or thousandths of a second, which are cut off and
// not rounded. What stands between apostrophes, and all that is no letter, stands for itself; two
// apostrophes are one.
//
// A second is rendered once and kept. A change of the machine's time zone shows with the next
// second. Any thread, as long as none changes the environment at that moment.
class DateFormatter {
  public:
    static constexpr std::size_t kLongest = 64;

    // A rendered moment, in place.
    class Text {
      public:
        operator std::string_view() const noexcept { return {characters_.data(), length_}; }

      private:
        friend class DateFormatter;
        Text() = default;

        std::array<char, kLongest> characters_; // as many as the length tells
        std::size_t length_ = 0;
    };

    // Raises NSInvalidArgumentException for a field that is not in the list above, for an
    // apostrophe without its counterpart and for a pattern that gives more than kLongest
    // characters.
    explicit DateFormatter(std::string_view pattern);

    // Years outside of 1 to 9999 stop at these limits. A change of the TZ variable shows at once.
    Ref<String> stringFromDate(const Date& date);
    // This moment, by one reading of the clock. A change of the TZ variable shows with the next
    // second: to look for it takes longer than all the rest.
    Text now();

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
    enum class ZoneLook : std::uint8_t { kEachTime, kEachSecond };
    class Parser;

    Text rendered(double timeIntervalSinceReferenceDate, ZoneLook look) noexcept;
    void renderSecond(std::int64_t secondsSince1970) noexcept;
    bool isKept(std::int64_t second, ZoneLook look) const noexcept;
    void keepTimeZone(std::string_view timeZone) noexcept;

    std::vector<Piece> pieces_;
    std::vector<Fraction> fractions_;

    // The second that was rendered last, and the zone that it was rendered for. Nothing in it
    // allocates: an exception under the lock would find the lock taken when it is logged.
    std::mutex mutex_;
    Text text_;
    std::int64_t second_ = 0;
    std::array<char, 64> timeZone_{};
    std::size_t timeZoneLength_ = kUnknown;

    static constexpr std::size_t kUnknown = static_cast<std::size_t>(-1);
};

} // namespace NS
