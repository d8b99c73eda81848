#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/DateStamp.h"
#include "Platform/Foundation/String.h"

#include <array>
#include <mutex>
#include <string_view>

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
    static constexpr std::size_t kLongest = DateStamp::kLongest;

    // A rendered moment, in place.
    class Text {
      public:
        operator std::string_view() const noexcept { return {characters_.data(), length_}; }

      private:
        friend class DateFormatter;
        explicit Text(std::string_view text) noexcept;

        std::array<char, kLongest> characters_; // as many as the length tells
        std::size_t length_;
    };

    // Raises NSInvalidArgumentException for a field that is not in the list above, for an
    // apostrophe without its counterpart and for a pattern that gives more than kLongest
    // characters.
    explicit DateFormatter(std::string_view pattern) : stamp_(pattern) {}

    // Years outside of 1 to 9999 stop at these limits. A change of the TZ variable shows at once.
    Ref<String> stringFromDate(const Date& date);
    // This moment, by one reading of the clock. A change of the TZ variable shows with the next
    // second: to look for it takes longer than all the rest.
    Text now();

  private:
    Text rendered(double timeIntervalSinceReferenceDate, DateStamp::ZoneLook look) noexcept;

    // Nothing under it allocates: an exception there would find it taken when it is logged.
    std::mutex mutex_;
    DateStamp stamp_;
};

} // namespace NS
