#include "Platform/Foundation/FormatConversion.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

namespace NS {

namespace {

using Length = FormatConversion::Length;

std::size_t paddingFor(const FormatConversion& conversion, std::size_t length) noexcept {
    return conversion.width > length ? conversion.width - length : 0;
}

enum class ZeroPadding : std::uint8_t { kAllowed, kIgnored };

// Sign or prefix, zeros up to the width where they are asked for, digits.
void appendNumber(StringBuilder& out, const FormatConversion& conversion, std::string_view prefix,
                  std::string_view digits, ZeroPadding zeroPadding) {
    const std::size_t padding = paddingFor(conversion, prefix.size() + digits.size());
    const bool zeros =
        conversion.zeroPadded && !conversion.leftAligned && zeroPadding == ZeroPadding::kAllowed;
    if (!conversion.leftAligned && !zeros) {
        out.appendRepeated(' ', padding);
    }
    out.appendAscii(prefix);
    if (zeros) {
        out.appendRepeated('0', padding);
    }
    out.appendAscii(digits);
    if (conversion.leftAligned) {
        out.appendRepeated(' ', padding);
    }
}

std::string_view signOf(const FormatConversion& conversion, bool negative) noexcept {
    if (negative) {
        return "-";
    }
    return conversion.showSign ? "+" : (conversion.blankSign ? " " : "");
}

void upperCase(std::string& text) {
    for (char& c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
}

// At least as many digits as the precision says; none at all for zero with a precision of zero.
std::string digitsOf(std::uint64_t value, int base, const std::optional<std::size_t>& precision) {
    std::string digits(64, '0');
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, base);
    digits.resize(static_cast<std::size_t>(end.ptr - digits.data()));
    const std::size_t least = precision.value_or(1);
    if (value == 0 && least == 0) {
        digits.clear();
    }
    return digits.size() < least ? std::string(least - digits.size(), '0') + digits : digits;
}

// A precision says how many zeros there are, and the width then fills with blanks.
ZeroPadding zeroPaddingFor(const FormatConversion& conversion) noexcept {
    return conversion.precision ? ZeroPadding::kIgnored : ZeroPadding::kAllowed;
}

std::int64_t cutToLength(Length length, std::int64_t value) noexcept {
    switch (length) {
    case Length::kChar:
        return static_cast<std::int8_t>(value);
    case Length::kShort:
        return static_cast<std::int16_t>(value);
    case Length::kInt:
        return static_cast<std::int32_t>(value);
    default:
        return value;
    }
}

std::uint64_t cutToLength(Length length, std::uint64_t value) noexcept {
    switch (length) {
    case Length::kChar:
        return static_cast<std::uint8_t>(value);
    case Length::kShort:
        return static_cast<std::uint16_t>(value);
    case Length::kInt:
        return static_cast<std::uint32_t>(value);
    default:
        return value;
    }
}

// std::to_chars with room for every double.
template <class... Precision>
std::string charactersOf(double magnitude, std::chars_format form, Precision... precision) {
    constexpr std::size_t kLongest = 512; // the digits of the greatest double, and an exponent
    std::string digits(kLongest + (std::size_t{0} + ... + static_cast<std::size_t>(precision)),
                       '\0');
    char* const first = digits.data();
    const auto end = std::to_chars(first, first + digits.size(), magnitude, form, precision...);
    digits.resize(static_cast<std::size_t>(end.ptr - first));
    return digits;
}

// "%#g": the form that "%g" chooses, with the zeros at its end.
std::string generalWithZeros(double magnitude, int precision) {
    const int digits = std::max(precision, 1);
    const std::string scientific =
        charactersOf(magnitude, std::chars_format::scientific, digits - 1);
    const int exponent = std::stoi(scientific.substr(scientific.find('e') + 1));
    if (exponent < -4 || exponent >= digits) {
        return scientific;
    }
    return charactersOf(magnitude, std::chars_format::fixed, digits - 1 - exponent);
}

std::string realDigits(const FormatConversion& conversion, char letter, double magnitude) {
    const int precision = static_cast<int>(conversion.precision.value_or(6));
    switch (letter) {
    case 'e':
        return charactersOf(magnitude, std::chars_format::scientific, precision);
    case 'f':
        return charactersOf(magnitude, std::chars_format::fixed, precision);
    case 'g':
        return conversion.alternate
                   ? generalWithZeros(magnitude, precision)
                   : charactersOf(magnitude, std::chars_format::general, precision);
    default:
        return conversion.precision ? charactersOf(magnitude, std::chars_format::hex, precision)
                                    : charactersOf(magnitude, std::chars_format::hex);
    }
}

void addMissingPoint(std::string& digits, char letter) {
    if (digits.find('.') == std::string::npos) {
        const char exponent = letter == 'a' ? 'p' : 'e';
        digits.insert(std::min(digits.find(exponent), digits.size()), 1, '.');
    }
}

std::string finiteDigits(const FormatConversion& conversion, char letter, double magnitude) {
    std::string digits = realDigits(conversion, letter, magnitude);
    if (conversion.alternate) {
        addMissingPoint(digits, letter);
    }
    return digits;
}

} // namespace

void appendPadded(StringBuilder& out, const FormatConversion& conversion, const String& text) {
    const std::size_t padding = paddingFor(conversion, text.length());
    if (!conversion.leftAligned) {
        out.appendRepeated(' ', padding);
    }
    out.append(text);
    if (conversion.leftAligned) {
        out.appendRepeated(' ', padding);
    }
}

void appendSigned(StringBuilder& out, const FormatConversion& conversion, std::int64_t value) {
    const std::int64_t cut = cutToLength(conversion.length, value);
    const auto bits = static_cast<std::uint64_t>(cut);
    const std::uint64_t magnitude = cut < 0 ? ~bits + 1 : bits;
    appendNumber(out, conversion, signOf(conversion, cut < 0),
                 digitsOf(magnitude, 10, conversion.precision), zeroPaddingFor(conversion));
}

void appendUnsigned(StringBuilder& out, const FormatConversion& conversion, std::uint64_t value) {
    const std::uint64_t cut = cutToLength(conversion.length, value);
    const bool hexadecimal = conversion.letter == 'x' || conversion.letter == 'X';
    const int base = hexadecimal ? 16 : (conversion.letter == 'o' ? 8 : 10);
    std::string digits = digitsOf(cut, base, conversion.precision);
    std::string prefix;
    if (conversion.alternate && hexadecimal && cut != 0) {
        prefix = "0x";
    } else if (conversion.alternate && base == 8 && !digits.starts_with('0')) {
        digits.insert(0, "0");
    }
    if (conversion.letter == 'X') {
        upperCase(prefix);
        upperCase(digits);
    }
    appendNumber(out, conversion, prefix, digits, zeroPaddingFor(conversion));
}

void appendPointer(StringBuilder& out, const FormatConversion& conversion, const void* pointer) {
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    appendNumber(out, conversion, "0x", digitsOf(address, 16, std::nullopt), ZeroPadding::kAllowed);
}

void appendReal(StringBuilder& out, const FormatConversion& conversion, double value) {
    const char letter = static_cast<char>(conversion.letter | 0x20);
    const bool finite = std::isfinite(value);
    std::string digits = finite ? finiteDigits(conversion, letter, std::fabs(value))
                                : (std::isnan(value) ? "nan" : "inf");
    std::string prefix(signOf(conversion, std::signbit(value) && !std::isnan(value)));
    if (letter == 'a' && finite) {
        prefix += "0x";
    }
    if (conversion.letter != letter) {
        upperCase(prefix);
        upperCase(digits);
    }
    appendNumber(out, conversion, prefix, digits,
                 finite ? ZeroPadding::kAllowed : ZeroPadding::kIgnored);
}

} // namespace NS
