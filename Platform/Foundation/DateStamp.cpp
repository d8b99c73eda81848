#include "Platform/Foundation/DateStamp.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/LocalTime.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace NS {

namespace {

// Seconds from 1970-01-01 to 2001-01-01, both at midnight UTC.
constexpr double kReferenceDate = 978307200.0;
// A day inside of the years 1 and 9999, so that no time zone leads out of them.
constexpr double kFirstMoment = -62135510400.0;
constexpr double kLastMoment = 253402214400.0;
constexpr std::int64_t kMicroseconds = 1000000;

struct Field {
    char letter;
    std::size_t width;
};
constexpr Field kFields[] = {
    {'y', 4},
    {'M', 2},
    {'d', 2},
    {'H', 2},
    {'m', 2},
    {'s', 2},
    {'S', 1},
    {'S', 2},
    {'S', 3},
};

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

int valueOf(char field, const LocalTime& time) noexcept {
    switch (field) {
    case 'y':
        return time.year;
    case 'M':
        return time.month;
    case 'd':
        return time.day;
    case 'H':
        return time.hour;
    case 'm':
        return time.minute;
    default:
        return time.second;
    }
}

// Writes the value's last digits, zeros in front.
void writeDigits(char* place, std::size_t digits, std::int64_t value) noexcept {
    for (std::size_t i = digits; i > 0; --i) {
        place[i - 1] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
}

struct Moment {
    std::int64_t second; // since 1970
    std::int64_t microsecond;
};

Moment momentOf(double timeIntervalSinceReferenceDate) noexcept {
    double time = timeIntervalSinceReferenceDate + kReferenceDate;
    if (!(time >= kFirstMoment)) { // also when it is not a number
        time = kFirstMoment;
    }
    const bool past = time < 0;
    // A double holds a moment of our days to a quarter of a microsecond. Rounding there keeps .41
    // from becoming .40 when the rest is cut off.
    const auto microseconds =
        static_cast<std::int64_t>(std::min(time, kLastMoment) * 1e6 + (past ? -0.5 : 0.5));
    const std::int64_t rest = microseconds % kMicroseconds;
    return rest < 0 ? Moment{microseconds / kMicroseconds - 1, rest + kMicroseconds}
                    : Moment{microseconds / kMicroseconds, rest};
}

std::int64_t cutTo(std::size_t digits, std::int64_t microsecond) noexcept {
    return digits == 1 ? microsecond / 100000
                       : (digits == 2 ? microsecond / 10000 : microsecond / 1000);
}

} // namespace

// Takes a pattern apart.
class DateStamp::Parser {
  public:
    explicit Parser(std::string_view pattern) : pattern_(pattern), rest_(pattern) {}

    std::vector<Piece> run() {
        while (!rest_.empty()) {
            if (rest_.front() == '\'') {
                takeQuoted();
            } else if (isLetter(rest_.front())) {
                takeField();
            } else {
                takeLiteral(1);
            }
        }
        flushLiteral();
        return std::move(pieces_);
    }

  private:
    void takeLiteral(std::size_t length) {
        literal_ += rest_.substr(0, length);
        rest_.remove_prefix(length);
    }

    // From one apostrophe to the next. Two of them are one that stands for itself, also in here.
    void takeQuoted() {
        rest_.remove_prefix(1);
        if (rest_.starts_with('\'')) {
            takeLiteral(1);
            return;
        }
        for (;;) {
            const std::size_t end = rest_.find('\'');
            if (end == std::string_view::npos) {
                raise("an apostrophe has no counterpart");
            }
            takeLiteral(end);
            rest_.remove_prefix(1);
            if (!rest_.starts_with('\'')) {
                return;
            }
            takeLiteral(1);
        }
    }

    void takeField() {
        const char letter = rest_.front();
        const std::size_t width = std::min(rest_.find_first_not_of(letter), rest_.size());
        const bool known = std::ranges::any_of(kFields, [&](const Field& field) {
            return field.letter == letter && field.width == width;
        });
        if (!known) {
            raise("there is no field \"" + std::string(rest_.substr(0, width)) + "\"");
        }
        flushLiteral();
        pieces_.push_back({letter, width, {}});
        rest_.remove_prefix(width);
    }

    void flushLiteral() {
        if (!literal_.empty()) {
            const std::size_t width = literal_.size();
            pieces_.push_back({0, width, std::exchange(literal_, {})});
        }
    }

    [[noreturn]] void raise(const std::string& why) const {
        Exception::raise(kInvalidArgumentException,
                         "date pattern \"" + std::string(pattern_) + "\": " + why);
    }

    std::string_view pattern_;
    std::string_view rest_;
    std::string literal_;
    std::vector<Piece> pieces_;
};

DateStamp::DateStamp(std::string_view pattern) : pieces_(Parser(pattern).run()) {
    for (const Piece& piece : pieces_) {
        if (piece.field == 'S') {
            fractions_.push_back({length_, piece.width});
        }
        length_ += piece.width;
    }
    if (length_ > kLongest) {
        Exception::raise(kInvalidArgumentException,
                         "date pattern \"" + std::string(pattern) + "\": it is too long");
    }
}

void DateStamp::renderSecond(std::int64_t secondsSince1970) noexcept {
    const LocalTime time = localTime(secondsSince1970);
    char* place = characters_.data();
    for (const Piece& piece : pieces_) {
        if (piece.field == 0) {
            std::ranges::copy(piece.literal, place);
        } else if (piece.field != 'S') {
            writeDigits(place, piece.width, valueOf(piece.field, time));
        }
        place += piece.width;
    }
}

bool DateStamp::isZoneKept() const noexcept {
    return timeZoneVariable() == std::string_view(timeZone_.data(), timeZoneLength_);
}

// A text too long to be kept leaves nothing kept, and each date is rendered anew.
void DateStamp::keepTimeZone(std::string_view timeZone) noexcept {
    timeZoneLength_ = timeZone.size() <= timeZone_.size() ? timeZone.size() : kUnknown;
    if (timeZoneLength_ != kUnknown) {
        std::ranges::copy(timeZone, timeZone_.begin());
    }
}

inline void DateStamp::keepSecond(std::int64_t secondsSince1970, ZoneLook look) noexcept {
    const bool isKept = secondsSince1970 == second_ && timeZoneLength_ != kUnknown &&
                        (look == ZoneLook::kEachSecond || isZoneKept());
    if (!isKept) [[unlikely]] {
        renderSecond(secondsSince1970);
        second_ = secondsSince1970;
        keepTimeZone(timeZoneVariable());
    }
}

inline void DateStamp::writeFractions(char* text, std::int64_t microsecond) const noexcept {
    for (const Fraction& fraction : fractions_) {
        writeDigits(text + fraction.position, fraction.digits, cutTo(fraction.digits, microsecond));
    }
}

std::string_view DateStamp::text(double timeIntervalSinceReferenceDate, ZoneLook look) noexcept {
    const Moment moment = momentOf(timeIntervalSinceReferenceDate);
    keepSecond(moment.second, look);
    writeFractions(characters_.data(), moment.microsecond);
    return {characters_.data(), length_};
}

// As many bytes are copied as a text can have, whatever it has: that takes no call. The fraction is
// written behind that, since the processor waits where it copies what was just written in pieces.
void DateStamp::append(ByteBuffer& out, double timeIntervalSinceReferenceDate) {
    const Moment moment = momentOf(timeIntervalSinceReferenceDate);
    keepSecond(moment.second, ZoneLook::kEachSecond);
    std::byte* const place = out.room(kLongest);
    std::memcpy(place, characters_.data(), kLongest);
    writeFractions(reinterpret_cast<char*>(place), moment.microsecond);
    out.extend(length_);
}

} // namespace NS
