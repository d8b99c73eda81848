#include "Platform/Foundation/DateFormatter.h"

#include "Platform/Foundation/Exception.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <mutex>
#include <utility>

namespace NS {

namespace {

constexpr double kSecondsFrom1970To2001 = 978307200.0;
constexpr std::int64_t kMicroseconds = 1'000'000;

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
    {'S', 3}
};

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

int valueOf(char field, const tm& time) noexcept {
    switch (field) {
    case 'y':
        return time.tm_year + 1900;
    case 'M':
        return time.tm_mon + 1;
    case 'd':
        return time.tm_mday;
    case 'H':
        return time.tm_hour;
    case 'm':
        return time.tm_min;
    default:
        return time.tm_sec;
    }
}

void appendPadded(std::string& text, std::int64_t value, std::size_t width) {
    const std::string digits = std::to_string(value);
    text.append(width > digits.size() ? width - digits.size() : 0, '0');
    text += digits;
}

std::string_view timeZoneVariable() noexcept {
    const char* const zone = std::getenv("TZ");
    // Not set and set to nothing are two different zones.
    return zone == nullptr ? std::string_view("\n") : std::string_view(zone);
}

} // namespace

// The second that was rendered last, and where fractions of it belong.
struct DateFormatter::Rendered {
    std::mutex mutex;
    std::int64_t second = std::numeric_limits<std::int64_t>::min();
    std::string timeZone;
    std::string text;
    std::vector<std::pair<std::size_t, std::size_t>> fractions; // position and digits
};

DateFormatter::DateFormatter(std::string_view pattern) : rendered_(std::make_unique<Rendered>()) {
    parse(pattern);
}

DateFormatter::~DateFormatter() = default;

void DateFormatter::parse(std::string_view pattern) {
    std::string literal;
    const auto flush = [&] {
        if (!literal.empty()) {
            pieces_.push_back({0, 0, std::exchange(literal, {})});
        }
    };
    bool quoted = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '\'') {
            quoted = !quoted;
        } else if (quoted || !isLetter(c)) {
            literal.push_back(c);
        } else {
            const std::size_t end = std::min(pattern.find_first_not_of(c, i), pattern.size());
            const bool known = std::ranges::any_of(kFields, [&](const Field& field) {
                return field.letter == c && field.width == end - i;
            });
            if (!known) {
                Exception::raise(kInvalidArgumentException,
                                 "unknown field in a date pattern: " +
                                     std::string(pattern.substr(i, end - i)));
            }
            flush();
            pieces_.push_back({c, end - i, {}});
            i = end - 1;
        }
    }
    flush();
}

void DateFormatter::render(std::int64_t second) {
    // Looks at the machine's time zone again; without it the C library keeps the first one it saw.
    ::tzset();
    const auto moment = static_cast<time_t>(second);
    tm time{};
    (void)::localtime_r(&moment, &time); // fails only for years beyond an int
    rendered_->text.clear();
    rendered_->fractions.clear();
    for (const Piece& piece : pieces_) {
        if (piece.field == 0) {
            rendered_->text += piece.literal;
        } else if (piece.field == 'S') {
            rendered_->fractions.emplace_back(rendered_->text.size(), piece.width);
            rendered_->text.append(piece.width, '0');
        } else {
            appendPadded(rendered_->text, valueOf(piece.field, time), piece.width);
        }
    }
    rendered_->second = second;
}

void DateFormatter::appendDate(double timeIntervalSinceReferenceDate, std::string& text) {
    // A double holds a moment of our time to a fraction of a microsecond; rounding there keeps .41
    // from becoming .40 when the hundredths are cut off.
    const auto micros = static_cast<std::int64_t>(
        std::llround((timeIntervalSinceReferenceDate + kSecondsFrom1970To2001) * 1e6));
    std::int64_t second = micros / kMicroseconds;
    std::int64_t fraction = micros % kMicroseconds;
    if (fraction < 0) {
        second -= 1;
        fraction += kMicroseconds;
    }
    const std::scoped_lock lock(rendered_->mutex);
    const std::string_view zone = timeZoneVariable();
    if (second != rendered_->second || zone != rendered_->timeZone) {
        rendered_->timeZone = zone;
        render(second);
    }
    const std::size_t start = text.size();
    text += rendered_->text;
    for (const auto& [position, digits] : rendered_->fractions) {
        std::int64_t rest = fraction;
        std::int64_t unit = kMicroseconds;
        for (std::size_t i = 0; i < digits; ++i) {
            unit /= 10;
            text[start + position + i] = static_cast<char>('0' + rest / unit);
            rest %= unit;
        }
    }
}

Ref<String> DateFormatter::stringFromDate(const Date& date) {
    std::string text;
    appendDate(date.timeIntervalSinceReferenceDate(), text);
    return str(text);
}

} // namespace NS
