#include "Platform/Foundation/String.h"

#include <charconv>
#include <limits>
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

// The leading integer of a text, held within the limits of the type.
template <class Integer>
Integer leadingInteger(const String& text) noexcept {
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

} // namespace

std::int64_t String::longLongValue() const noexcept {
    return leadingInteger<std::int64_t>(*this);
}

std::int32_t String::intValue() const noexcept {
    return leadingInteger<std::int32_t>(*this);
}

double String::doubleValue() const noexcept {
    UnitReader reader(*this);
    reader.skipWhiteSpace();
    const bool negative = reader.acceptSign();
    std::string digits;
    for (; reader.peek() != 0 && reader.peek() < 0x80; reader.skip()) {
        digits.push_back(static_cast<char>(reader.peek()));
    }
    double value = 0;
    if (!digits.empty() && (isDigit(static_cast<char16_t>(digits[0])) || digits[0] == '.')) {
        (void)std::from_chars(digits.data(), digits.data() + digits.size(), value);
    }
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
