#include "Platform/Foundation/Format.h"

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/StringBuilder.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <string>

namespace NS {

namespace {

[[noreturn]] void raiseBadFormat(std::string_view format, const char* why) {
    Exception::raise(kInvalidArgumentException, "format \"" + std::string(format) + "\": " + why);
}

enum class Length : std::uint8_t { kInt, kChar, kShort, kLong };

// One conversion of a format, between its "%" and its letter.
struct Conversion {
    bool leftAligned = false;
    bool showSign = false;
    bool blankSign = false;
    bool alternate = false;
    bool zeroPadded = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision;
    Length length = Length::kInt;
    char letter = 0;
};

// Wider or more precise than this is a mistake, and would only eat memory.
constexpr std::size_t kWidthLimit = 1 << 16;

class Formatter {
  public:
    Formatter(std::string_view format, std::span<const FormatArgument> arguments)
        : format_(format), rest_(format), arguments_(arguments) {}

    Ref<String> run() {
        while (!rest_.empty()) {
            const std::size_t percent = rest_.find('%');
            appendLiteral(rest_.substr(0, percent));
            if (percent == std::string_view::npos) {
                break;
            }
            rest_.remove_prefix(percent + 1);
            convert();
        }
        return out_.string();
    }

  private:
    void appendLiteral(std::string_view bytes) {
        if (!bytes.empty()) {
            out_.append(*String::fromFileSystemRepresentation(bytes));
        }
    }

    char peek() const noexcept { return rest_.empty() ? '\0' : rest_.front(); }
    bool accept(char c) {
        if (peek() != c) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    std::optional<std::size_t> acceptNumber() {
        std::size_t number = 0;
        const char* const end = rest_.data() + rest_.size();
        const auto [stop, error] = std::from_chars(rest_.data(), end, number);
        if (stop == rest_.data()) {
            return std::nullopt;
        }
        if (error != std::errc() || number > kWidthLimit) {
            raiseBadFormat(format_, "a number in it is too large");
        }
        rest_.remove_prefix(static_cast<std::size_t>(stop - rest_.data()));
        return number;
    }

    void convert() {
        if (accept('%')) {
            out_.append('%');
            return;
        }
        acceptPosition();
        Conversion conversion;
        acceptFlags(conversion);
        acceptWidth(conversion);
        acceptPrecision(conversion);
        acceptLength(conversion);
        if (rest_.empty()) {
            raiseBadFormat(format_, "it ends within a conversion");
        }
        conversion.letter = peek();
        rest_.remove_prefix(1);
        append(conversion, nextArgument());
        position_.reset();
    }

    // "2$": the conversion takes the second argument instead of the next one.
    void acceptPosition() {
        const std::string_view before = rest_;
        const auto number = peek() == '0' ? std::nullopt : acceptNumber();
        if (number && accept('$')) {
            position_ = *number;
        } else {
            rest_ = before;
        }
    }

    void acceptFlags(Conversion& conversion) {
        for (;;) {
            if (accept('-')) {
                conversion.leftAligned = true;
            } else if (accept('+')) {
                conversion.showSign = true;
            } else if (accept(' ')) {
                conversion.blankSign = true;
            } else if (accept('#')) {
                conversion.alternate = true;
            } else if (accept('0')) {
                conversion.zeroPadded = true;
            } else {
                return;
            }
        }
    }

    void acceptWidth(Conversion& conversion) {
        if (!accept('*')) {
            conversion.width = acceptNumber().value_or(0);
            return;
        }
        const std::int64_t width = nextInteger();
        conversion.leftAligned = conversion.leftAligned || width < 0;
        conversion.width = checkedSize(width < 0 ? -width : width);
    }

    void acceptPrecision(Conversion& conversion) {
        if (!accept('.')) {
            return;
        }
        if (!accept('*')) {
            conversion.precision = acceptNumber().value_or(0);
        } else if (const std::int64_t precision = nextInteger(); precision >= 0) {
            conversion.precision = checkedSize(precision);
        }
    }

    std::size_t checkedSize(std::int64_t size) const {
        if (size < 0 || size > static_cast<std::int64_t>(kWidthLimit)) {
            raiseBadFormat(format_, "a width or precision is too large");
        }
        return static_cast<std::size_t>(size);
    }

    void acceptLength(Conversion& conversion) {
        if (accept('h')) {
            conversion.length = accept('h') ? Length::kChar : Length::kShort;
        } else if (accept('l')) {
            (void)accept('l'); // long and long long are both 64 bits wide
            conversion.length = Length::kLong;
        } else if (accept('q') || accept('j') || accept('z') || accept('t')) {
            conversion.length = Length::kLong;
        } else {
            (void)accept('L'); // a long double came in as a double
        }
    }

    const FormatArgument& nextArgument() {
        const std::size_t index = position_ ? *position_ - 1 : next_++;
        if (index >= arguments_.size()) {
            raiseBadFormat(format_, "it has more conversions than there are arguments");
        }
        return arguments_[index];
    }

    std::int64_t nextInteger() {
        if (next_ >= arguments_.size()) {
            raiseBadFormat(format_, "it has more conversions than there are arguments");
        }
        return signedOf(arguments_[next_++]);
    }

    std::int64_t signedOf(const FormatArgument& argument) const {
        switch (argument.kind()) {
        case FormatArgument::Kind::kSigned:
            return argument.signedValue();
        case FormatArgument::Kind::kUnsigned:
            return static_cast<std::int64_t>(argument.unsignedValue());
        default:
            raiseBadFormat(format_, "a conversion asks for an integer and gets something else");
        }
    }

    void append(const Conversion& conversion, const FormatArgument& argument) {
        switch (conversion.letter) {
        case '@':
            appendObject(conversion, argument);
            break;
        case 'd':
        case 'i':
            appendSigned(conversion, signedOf(argument));
            break;
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            appendUnsigned(conversion, static_cast<std::uint64_t>(signedOf(argument)));
            break;
        case 'c':
            appendText(conversion, *String::fromFileSystemRepresentation(
                                       std::string(1, static_cast<char>(signedOf(argument)))));
            break;
        case 'C':
            appendUnit(conversion, static_cast<char16_t>(signedOf(argument)));
            break;
        case 's':
            appendCString(conversion, argument);
            break;
        case 'p':
            appendPointer(conversion, argument);
            break;
        default:
            appendReal(conversion, argument);
        }
    }

    void appendObject(const Conversion& conversion, const FormatArgument& argument) {
        if (argument.kind() != FormatArgument::Kind::kObject) {
            raiseBadFormat(format_, "\"%@\" asks for an object and gets something else");
        }
        appendText(conversion, *descriptionOf(argument.object()));
    }

    void appendUnit(const Conversion& conversion, char16_t unit) {
        appendText(conversion, *String::fromUtf16({&unit, 1}));
    }

    void appendCString(const Conversion& conversion, const FormatArgument& argument) {
        if (argument.kind() != FormatArgument::Kind::kText) {
            raiseBadFormat(format_, "\"%s\" asks for a text and gets something else");
        }
        const char* const text = argument.text() == nullptr ? "(null)" : argument.text();
        const std::size_t length =
            conversion.precision ? ::strnlen(text, *conversion.precision) : std::strlen(text);
        appendPadded(conversion, *String::fromFileSystemRepresentation({text, length}));
    }

    void appendText(const Conversion& conversion, const String& text) {
        if (conversion.precision && *conversion.precision < text.length()) {
            appendPadded(conversion, *text.substringToIndex(*conversion.precision));
        } else {
            appendPadded(conversion, text);
        }
    }

    void appendPadded(const Conversion& conversion, const String& text) {
        const std::size_t padding =
            conversion.width > text.length() ? conversion.width - text.length() : 0;
        if (!conversion.leftAligned) {
            out_.appendRepeated(' ', padding);
        }
        out_.append(text);
        if (conversion.leftAligned) {
            out_.appendRepeated(' ', padding);
        }
    }

    // Sign or prefix, zeros up to the width where they are asked for, digits.
    void appendNumber(const Conversion& conversion, std::string_view prefix,
                      std::string_view digits, bool zerosAllowed) {
        const std::size_t length = prefix.size() + digits.size();
        const std::size_t padding = conversion.width > length ? conversion.width - length : 0;
        const bool zeros = conversion.zeroPadded && !conversion.leftAligned && zerosAllowed;
        if (!conversion.leftAligned && !zeros) {
            out_.appendRepeated(' ', padding);
        }
        out_.appendAscii(prefix);
        if (zeros) {
            out_.appendRepeated('0', padding);
        }
        out_.appendAscii(digits);
        if (conversion.leftAligned) {
            out_.appendRepeated(' ', padding);
        }
    }

    static std::string_view signOf(const Conversion& conversion, bool negative) {
        if (negative) {
            return "-";
        }
        return conversion.showSign ? "+" : (conversion.blankSign ? " " : "");
    }

    static std::string digitsOf(std::uint64_t value, int base,
                                const std::optional<std::size_t>& precision) {
        std::string digits(64, '0');
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, base);
        digits.resize(static_cast<std::size_t>(end.ptr - digits.data()));
        if (precision && *precision == 0 && value == 0) {
            digits.clear();
        }
        const std::size_t least = precision.value_or(1);
        return digits.size() < least ? std::string(least - digits.size(), '0') + digits : digits;
    }

    void appendSigned(const Conversion& conversion, std::int64_t wide) {
        std::int64_t value = wide;
        if (conversion.length == Length::kInt) {
            value = static_cast<std::int32_t>(wide);
        } else if (conversion.length == Length::kShort) {
            value = static_cast<std::int16_t>(wide);
        } else if (conversion.length == Length::kChar) {
            value = static_cast<std::int8_t>(wide);
        }
        const auto magnitude =
            value < 0 ? ~static_cast<std::uint64_t>(value) + 1 : static_cast<std::uint64_t>(value);
        appendNumber(conversion, signOf(conversion, value < 0),
                     digitsOf(magnitude, 10, conversion.precision), !conversion.precision);
    }

    void appendUnsigned(const Conversion& conversion, std::uint64_t wide) {
        std::uint64_t value = wide;
        if (conversion.length == Length::kInt) {
            value = static_cast<std::uint32_t>(wide);
        } else if (conversion.length == Length::kShort) {
            value = static_cast<std::uint16_t>(wide);
        } else if (conversion.length == Length::kChar) {
            value = static_cast<std::uint8_t>(wide);
        }
        const bool hexadecimal = conversion.letter == 'x' || conversion.letter == 'X';
        const int base = hexadecimal ? 16 : (conversion.letter == 'o' ? 8 : 10);
        std::string digits = digitsOf(value, base, conversion.precision);
        std::string prefix;
        if (conversion.alternate && hexadecimal && value != 0) {
            prefix = "0x";
        } else if (conversion.alternate && base == 8 && !digits.starts_with('0')) {
            digits.insert(0, "0");
        }
        if (conversion.letter == 'X') {
            upperCase(prefix);
            upperCase(digits);
        }
        appendNumber(conversion, prefix, digits, !conversion.precision);
    }

    void appendPointer(const Conversion& conversion, const FormatArgument& argument) {
        const void* pointer = nullptr;
        if (argument.kind() == FormatArgument::Kind::kPointer) {
            pointer = argument.pointer();
        } else if (argument.kind() == FormatArgument::Kind::kObject) {
            pointer = argument.object();
        } else if (argument.kind() == FormatArgument::Kind::kText) {
            pointer = argument.text();
        } else {
            raiseBadFormat(format_, "\"%p\" asks for a pointer and gets something else");
        }
        appendNumber(conversion, "0x", digitsOf(reinterpret_cast<std::uintptr_t>(pointer), 16, {}),
                     true);
    }

    static void upperCase(std::string& text) {
        for (char& c : text) {
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
    }

    std::string realDigits(const Conversion& conversion, char letter, double magnitude) const {
        std::string digits(512 + conversion.precision.value_or(0), '0');
        char* const first = digits.data();
        char* const last = first + digits.size();
        const bool exact = letter == 'a' && !conversion.precision;
        const std::chars_format form = letter == 'e'   ? std::chars_format::scientific
                                       : letter == 'g' ? std::chars_format::general
                                       : letter == 'a' ? std::chars_format::hex
                                                       : std::chars_format::fixed;
        const int precision = static_cast<int>(conversion.precision.value_or(6));
        const auto end = exact ? std::to_chars(first, last, magnitude, form)
                               : std::to_chars(first, last, magnitude, form, precision);
        digits.resize(static_cast<std::size_t>(end.ptr - first));
        return digits;
    }

    void appendReal(const Conversion& conversion, const FormatArgument& argument) {
        const char letter = static_cast<char>(conversion.letter | 0x20);
        if (std::string_view("fega").find(letter) == std::string_view::npos) {
            raiseBadFormat(format_, "it has a conversion that does not exist");
        }
        if (argument.kind() != FormatArgument::Kind::kReal) {
            raiseBadFormat(format_, "a conversion asks for a real number and gets something else");
        }
        const double value = argument.realValue();
        const bool finite = std::isfinite(value);
        std::string digits = finite ? realDigits(conversion, letter, std::fabs(value))
                                    : (std::isnan(value) ? "nan" : "inf");
        std::string prefix(signOf(conversion, std::signbit(value) && !std::isnan(value)));
        if (letter == 'a' && finite) {
            prefix += "0x";
        }
        if (conversion.letter != letter) {
            upperCase(prefix);
            upperCase(digits);
        }
        appendNumber(conversion, prefix, digits, finite);
    }

    std::string_view format_;
    std::string_view rest_;
    std::span<const FormatArgument> arguments_;
    std::size_t next_ = 0;
    std::optional<std::size_t> position_;
    StringBuilder out_;
};

} // namespace

Ref<String> stringWithFormatArguments(std::string_view format,
                                      std::span<const FormatArgument> arguments) {
    return Formatter(format, arguments).run();
}

} // namespace NS
