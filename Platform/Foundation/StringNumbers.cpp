#include "Platform/Foundation/String.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string>

// Numbers that stand at the beginning of a text.
namespace NS {

namespace {

// Reads a text from its front, a unit at a time.
class UnitReader {
  public:
    explicit UnitReader(const String& text) noexcept : ascii_(text.ascii()), utf16_(text.utf16()) {}

    // The unit in front, 0 at the end.
    char16_t peek() const noexcept {
        if (!ascii_.empty()) {
            return static_cast<unsigned char>(ascii_.front());
        }
        return utf16_.empty() ? u'\0' : utf16_.front();
    }
    void skip() noexcept {
        if (!ascii_.empty()) {
            ascii_.remove_prefix(1);
        } else {
            utf16_.remove_prefix(1);
        }
    }

    void skipWhiteSpace() noexcept {
        while (isWhiteSpace(peek())) {
            skip();
        }
    }
    // True for a minus; takes a sign of either kind.
    bool acceptSign() noexcept {
        const char16_t sign = peek();
        if (sign == u'-' || sign == u'+') {
            skip();
        }
        return sign == u'-';
    }

  private:
    // White space and line ends of Unicode (general category Z and the control characters for it).
    static bool isWhiteSpace(char16_t unit) noexcept {
        return (unit >= 0x09 && unit <= 0x0D) || unit == 0x20 || unit == 0x85 || unit == 0xA0 ||
               unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 ||
               unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
    }

    std::string_view ascii_;
    std::u16string_view utf16_;
};

bool isDigit(char16_t unit) noexcept {
    return unit >= u'0' && unit <= u'9';
}

// The number that a text is which has nothing but digits, few enough for any type. Services send
// sizes and dates so.
template <class Integer>
std::optional<Integer> plainInteger(std::string_view ascii) noexcept {
    if (ascii.empty() || ascii.size() > std::numeric_limits<Integer>::digits10) {
        return std::nullopt;
    }
    Integer value = 0;
    for (const char c : ascii) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        value = static_cast<Integer>(value * 10 + (c - '0'));
    }
    return value;
}

// The leading integer of a text, held within the limits of the type.
template <class Integer>
Integer leadingInteger(const String& text) noexcept {
    if (const auto plain = plainInteger<Integer>(text.ascii())) {
        return *plain;
    }
    constexpr Integer kMin = std::numeric_limits<Integer>::min();
    constexpr Integer kMax = std::numeric_limits<Integer>::max();
    UnitReader reader(text);
    reader.skipWhiteSpace();
    const bool negative = reader.acceptSign();
    Integer value = 0; // negative all along: that side reaches further
    for (; isDigit(reader.peek()); reader.skip()) {
        const auto digit = static_cast<Integer>(reader.peek() - u'0');
        if (value < (kMin + digit) / 10) {
            return negative ? kMin : kMax;
        }
        value = static_cast<Integer>(value * 10 - digit);
    }
    if (negative) {
        return value;
    }
    return value == kMin ? kMax : static_cast<Integer>(-value);
}

bool isPartOfReal(char16_t unit) noexcept {
    return isDigit(unit) || unit == u'.' || unit == u'e' || unit == u'E' || unit == u'+' ||
           unit == u'-';
}

// True when a decimal number that no double can hold is too large, not too small. Its power of ten
// is that of its first digit other than zero, and its exponent.
bool isTooLarge(std::string_view number) noexcept {
    const std::size_t mantissaEnd = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, mantissaEnd);
    const auto point = static_cast<double>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<double>(mantissa.find_first_of("123456789"));
    std::string_view exponentText = number.substr(mantissaEnd);
    exponentText.remove_prefix(std::min<std::size_t>(exponentText.size(), 1));
    const bool negative = exponentText.starts_with('-');
    if (negative || exponentText.starts_with('+')) {
        exponentText.remove_prefix(1);
    }
    long long exponent = 0;
    const auto [stop, error] =
        std::from_chars(exponentText.data(), exponentText.data() + exponentText.size(), exponent);
    if (error == std::errc::result_out_of_range) {
        return !negative;
    }
    return point - first + static_cast<double>(negative ? -exponent : exponent) > 0;
}

// The real number that an unsigned text begins with, 0 when there is none.
double leadingReal(std::string_view number) noexcept {
    if (number.empty() || number.front() == '-') {
        return 0;
    }
    double value = 0;
    const auto [stop, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error == std::errc::result_out_of_range) {
        return isTooLarge({number.data(), stop}) ? std::numeric_limits<double>::infinity() : 0;
    }
    return value;
}

} // namespace

std::int64_t String::longLongValue() const noexcept {
    return leadingInteger<std::int64_t>(*this);
}

std::int32_t String::intValue() const noexcept {
    return leadingInteger<std::int32_t>(*this);
}

double String::doubleValue() const {
    UnitReader reader(*this);
    reader.skipWhiteSpace();
    const bool negative = reader.acceptSign();
    std::string number;
    for (; isPartOfReal(reader.peek()); reader.skip()) {
        number.push_back(static_cast<char>(reader.peek()));
    }
    const double value = leadingReal(number);
    return negative ? -value : value;
}

bool String::boolValue() const noexcept {
    UnitReader reader(*this);
    reader.skipWhiteSpace();
    (void)reader.acceptSign();
    while (reader.peek() == u'0') {
        reader.skip();
    }
    const char16_t unit = reader.peek();
    return unit == u'Y' || unit == u'y' || unit == u'T' || unit == u't' || isDigit(unit);
}

} // namespace NS
