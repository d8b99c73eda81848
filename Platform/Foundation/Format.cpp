#include "Platform/Foundation/Format.h"

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/FormatConversion.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>

namespace NS {

namespace {

[[noreturn]] void raiseBadFormat(std::string_view format, const char* why) {
    Exception::raise(kInvalidArgumentException, "format \"" + std::string(format) + "\": " + why);
}

// Wider or more precise than this is a mistake, and would only eat memory.
constexpr std::size_t kWidthLimit = 1 << 16;
// What a format's arguments mostly come to, in characters.
constexpr std::size_t kUsualArguments = 64;

class Formatter {
  public:
    Formatter(StringBuilder& out, std::string_view format,
              std::span<const FormatArgument> arguments)
        : format_(format), rest_(format), arguments_(arguments), out_(out) {
        out_.reserve(out_.length() + format.size() + kUsualArguments);
    }

    void run() {
        for (;;) {
            appendLiteral();
            if (rest_.empty()) {
                return;
            }
            rest_.remove_prefix(1);
            convert();
        }
    }

  private:
    // What stands before the next conversion: mostly so few characters that a loop in place finds
    // their end sooner than the C library's search.
    void appendLiteral() {
        const auto end = std::find(rest_.begin(), rest_.end(), '%');
        const auto length = static_cast<std::size_t>(end - rest_.begin());
        const std::string_view bytes = rest_.substr(0, length);
        if (Utf8::isAscii(bytes)) {
            out_.appendAscii(bytes);
        } else {
            out_.append(*String::fromFileSystemRepresentation(bytes));
        }
        rest_.remove_prefix(length);
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
        if (peek() < '0' || peek() > '9') {
            return std::nullopt;
        }
        std::size_t number = 0;
        const char* const end = rest_.data() + rest_.size();
        const auto [stop, error] = std::from_chars(rest_.data(), end, number);
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
        if (accept('@')) { // as nearly always
            out_.append(*descriptionAt(nextArgument()));
            return;
        }
        acceptPosition();
        FormatConversion conversion;
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

    void acceptFlags(FormatConversion& conversion) {
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

    void acceptWidth(FormatConversion& conversion) {
        if (!accept('*')) {
            conversion.width = acceptNumber().value_or(0);
            return;
        }
        const std::int64_t width = nextInteger();
        conversion.leftAligned = conversion.leftAligned || width < 0;
        conversion.width =
            checkedSize(width < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(width)
                                  : static_cast<std::uint64_t>(width));
    }

    void acceptPrecision(FormatConversion& conversion) {
        if (!accept('.')) {
            return;
        }
        if (!accept('*')) {
            conversion.precision = acceptNumber().value_or(0);
        } else if (const std::int64_t precision = nextInteger(); precision >= 0) {
            conversion.precision = checkedSize(static_cast<std::uint64_t>(precision));
        }
    }

    std::size_t checkedSize(std::uint64_t size) const {
        if (size > kWidthLimit) {
            raiseBadFormat(format_, "a width or precision is too large");
        }
        return size;
    }

    void acceptLength(FormatConversion& conversion) {
        using Length = FormatConversion::Length;
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
        return argumentAt(position_ ? *position_ - 1 : next_++);
    }

    std::int64_t nextInteger() { return signedOf(argumentAt(next_++)); }

    const FormatArgument& argumentAt(std::size_t index) const {
        if (index >= arguments_.size()) {
            raiseBadFormat(format_, "it has more conversions than there are arguments");
        }
        return arguments_[index];
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

    void append(const FormatConversion& conversion, const FormatArgument& argument) {
        switch (conversion.letter) {
        case '@':
            appendText(conversion, *descriptionAt(argument));
            break;
        case 'd':
        case 'i':
            appendSigned(out_, conversion, signedOf(argument));
            break;
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            appendUnsigned(out_, conversion, static_cast<std::uint64_t>(signedOf(argument)));
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

    Ref<String> descriptionAt(const FormatArgument& argument) const {
        if (argument.kind() != FormatArgument::Kind::kObject) {
            raiseBadFormat(format_, "\"%@\" asks for an object and gets something else");
        }
        return descriptionOf(argument.object());
    }

    void appendUnit(const FormatConversion& conversion, char16_t unit) {
        appendText(conversion, *String::fromUtf16({&unit, 1}));
    }

    void appendCString(const FormatConversion& conversion, const FormatArgument& argument) {
        if (argument.kind() != FormatArgument::Kind::kText) {
            raiseBadFormat(format_, "\"%s\" asks for a text and gets something else");
        }
        const char* const text = argument.text() == nullptr ? "(null)" : argument.text();
        const std::size_t length =
            conversion.precision ? ::strnlen(text, *conversion.precision) : std::strlen(text);
        appendPadded(out_, conversion, *String::fromFileSystemRepresentation({text, length}));
    }

    void appendText(const FormatConversion& conversion, const String& text) {
        if (conversion.precision && *conversion.precision < text.length()) {
            appendPadded(out_, conversion, *text.substringToIndex(*conversion.precision));
        } else {
            appendPadded(out_, conversion, text);
        }
    }

    void appendPointer(const FormatConversion& conversion, const FormatArgument& argument) {
        switch (argument.kind()) {
        case FormatArgument::Kind::kPointer:
            return NS::appendPointer(out_, conversion, argument.pointer());
        case FormatArgument::Kind::kObject:
            return NS::appendPointer(out_, conversion, argument.object());
        case FormatArgument::Kind::kText:
            return NS::appendPointer(out_, conversion, argument.text());
        default:
            raiseBadFormat(format_, "\"%p\" asks for a pointer and gets something else");
        }
    }

    void appendReal(const FormatConversion& conversion, const FormatArgument& argument) {
        if (std::string_view("fFeEgGaA").find(conversion.letter) == std::string_view::npos) {
            raiseBadFormat(format_, "it has a conversion that does not exist");
        }
        if (argument.kind() != FormatArgument::Kind::kReal) {
            raiseBadFormat(format_, "a conversion asks for a real number and gets something else");
        }
        NS::appendReal(out_, conversion, argument.realValue());
    }

    std::string_view format_;
    std::string_view rest_;
    std::span<const FormatArgument> arguments_;
    std::size_t next_ = 0;
    std::optional<std::size_t> position_;
    StringBuilder& out_;
};

} // namespace

Ref<String> stringWithFormatArguments(std::string_view format,
                                      std::span<const FormatArgument> arguments) {
    StringBuilder text;
    appendFormatWithArguments(text, format, arguments);
    return text.string();
}

void appendFormatWithArguments(StringBuilder& out, std::string_view format,
                               std::span<const FormatArgument> arguments) {
    Formatter(out, format, arguments).run();
}

} // namespace NS
