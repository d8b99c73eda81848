#include "Platform/Foundation/ISO8601.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace NS {

namespace {

using namespace std::chrono;

constexpr sys_days kReference = year(2001) / 1 / 1;
constexpr double kFirstSecond = duration<double>(sys_days(year(1) / 1 / 1) - kReference).count();
constexpr double kEnd = duration<double>(sys_days(year(10000) / 1 / 1) - kReference).count();

// Takes what it is asked for off the front of a text, or fails once and for all.
class Front {
  public:
    explicit Front(std::string_view text) noexcept : rest_(text) {}

    int digits(std::size_t count) noexcept {
        int value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const char c = i < rest_.size() ? rest_[i] : '\0';
            failed_ = failed_ || c < '0' || c > '9';
            value = value * 10 + (c - '0');
        }
        rest_.remove_prefix(std::min(count, rest_.size()));
        return failed_ ? 0 : value;
    }
    void character(char expected) noexcept {
        failed_ = failed_ || !rest_.starts_with(expected);
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
    }
    // A point and digits, or nothing: 0.
    double fraction() noexcept {
        if (!rest_.starts_with('.')) {
            return 0;
        }
        const std::size_t length = std::min(rest_.find_first_not_of("0123456789", 1), rest_.size());
        double value = 0;
        (void)std::from_chars(rest_.data(), rest_.data() + length, value); // a point and digits
        failed_ = failed_ || length == 1;
        rest_.remove_prefix(length);
        return value;
    }
    bool isAtEnd() const noexcept { return !failed_ && rest_.empty(); }

  private:
    std::string_view rest_;
    bool failed_ = false;
};

// The places after the point, in the fewest digits that give the number back, at most 20.
std::string fractionDigits(double whole, double value) {
    std::array<char, 32> digits{};
    for (int precision = 1;; ++precision) {
        const int length =
            std::snprintf(digits.data(), digits.size(), "%.*f", precision, value - whole);
        const std::string_view text(digits.data(), static_cast<std::size_t>(length));
        double fraction = 0;
        (void)std::from_chars(text.data(), text.data() + text.size(), fraction);
        // With few places a fraction may round up to the next second.
        if (text.starts_with('0') && (whole + fraction == value || precision == 20)) {
            return std::string(text.substr(1));
        }
    }
}

} // namespace

std::optional<std::string> iso8601FromSeconds(double value) {
    if (!(value >= kFirstSecond && value < kEnd)) {
        return std::nullopt;
    }
    double whole = std::floor(value);
    if (value - whole >= 1) { // just below a second, and nearer to it than a number can tell
        whole += 1;
    }
    const sys_seconds moment = kReference + seconds(static_cast<std::int64_t>(whole));
    const sys_days day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss time{moment - day};
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                        static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                        static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                        static_cast<int>(time.minutes().count()),
                        static_cast<int>(time.seconds().count()));
    return text.data() + (value > whole ? fractionDigits(whole, value) : std::string()) + 'Z';
}

std::optional<double> secondsFromIso8601(std::string_view text) {
    Front front(text);
    const int years = front.digits(4);
    front.character('-');
    const int months = front.digits(2);
    front.character('-');
    const int monthDays = front.digits(2);
    front.character('T');
    const int hour = front.digits(2);
    front.character(':');
    const int minute = front.digits(2);
    front.character(':');
    const int second = front.digits(2);
    const double fraction = front.fraction();
    front.character('Z');
    const year_month_day date(year(years), month(static_cast<unsigned>(months)),
                              day(static_cast<unsigned>(monthDays)));
    if (!front.isAtEnd() || !date.ok() || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    const sys_seconds moment = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
    return static_cast<double>((moment - kReference).count()) + fraction;
}

} // namespace NS
