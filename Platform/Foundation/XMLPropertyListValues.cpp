#include "Platform/Foundation/XMLPropertyListValues.h"

#include "Platform/Foundation/ISO8601.h"
#include "Platform/Foundation/String.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace NS {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) noexcept {
    const std::size_t begin = text.find_first_not_of(kWhiteSpace);
    return begin == std::string_view::npos
               ? std::string_view()
               : text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

// Takes a sign off the front; true for a minus.
bool takeSign(std::string_view& text) noexcept {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return isNegative;
}

bool isWhole(const std::from_chars_result& result, std::string_view text) noexcept {
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

} // namespace

std::optional<XMLInteger> integerFromXML(std::string_view text) {
    constexpr auto kLowest = std::uint64_t{1} << 63U; // the magnitude of the lowest number
    text = trimmed(text);
    XMLInteger integer{.isNegative = takeSign(text)};
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(isHexadecimal ? 2 : 0);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), integer.magnitude,
                                        isHexadecimal ? 16 : 10);
    const bool fits = !integer.isNegative || integer.magnitude <= kLowest;
    return isWhole(result, text) && fits ? std::optional(integer) : std::nullopt;
}

std::optional<double> realFromXML(std::string_view text) {
    text = trimmed(text);
    const bool isNegative = takeSign(text);
    double real = 0;
    if (text.starts_with('-')) {
        return std::nullopt; // two signs
    }
    auto result = std::from_chars(text.data(), text.data() + text.size(), real);
    if (result.ec == std::errc::result_out_of_range) { // infinity, or as good as zero
        real = String::fromAscii(text.substr(0, static_cast<std::size_t>(result.ptr - text.data())))
                   ->doubleValue();
        result.ec = std::errc();
    }
    if (!isWhole(result, text)) {
        return std::nullopt;
    }
    return isNegative ? -real : real;
}

std::optional<double> dateFromXML(std::string_view text) {
    return secondsFromIso8601(trimmed(text));
}

} // namespace NS
