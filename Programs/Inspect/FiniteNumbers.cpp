#include "Programs/Inspect/FiniteNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace Inspection {

namespace {

constexpr auto kNone = std::string_view::npos;

std::size_t orEnd(std::size_t position, std::string_view json) {
    return std::min(position, json.size());
}

// Behind the string that begins at a quotation mark.
std::size_t behindString(std::string_view json, std::size_t begin) {
    std::size_t end = begin + 1;
    while ((end = json.find_first_of("\"\\", end)) != kNone && json[end] == '\\') {
        end += 2;
    }
    return end == kNone ? json.size() : end + 1;
}

// A number takes an exponent or this many digits to be too large.
bool isBeyondRange(std::string_view number) {
    constexpr std::size_t kDigits = std::numeric_limits<double>::max_exponent10;
    return (number.size() > kDigits || number.find_first_of("eE") != kNone) &&
           std::isinf(std::strtod(std::string(number).c_str(), nullptr));
}

} // namespace

FiniteNumbers withFiniteNumbers(std::string_view json) {
    FiniteNumbers finite;
    std::size_t count = 0;
    for (std::size_t at = 0; (at = json.find_first_of("\"-0123456789", at)) != kNone;) {
        if (json[at] == '"') {
            at = orEnd(behindString(json, at), json);
            continue;
        }
        const std::size_t end = orEnd(json.find_first_not_of("+-.0123456789eE", at), json);
        const std::string_view number = json.substr(at, end - at);
        if (isBeyondRange(number)) {
            finite.json.append(json, finite.json.size(), at - finite.json.size());
            finite.json += number.starts_with('-') ? "-1.0" : "1.0";
            finite.json.resize(end, ' ');
            finite.overflowing.push_back(count);
        }
        ++count;
        at = end;
    }
    if (!finite.overflowing.empty()) {
        finite.json.append(json, finite.json.size());
    }
    return finite;
}

} // namespace Inspection
