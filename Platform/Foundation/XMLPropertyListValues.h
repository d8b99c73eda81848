#pragma once

#include "Platform/Foundation/BinaryPropertyListWriter.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace NS {

// What stands between the tags of an XML property list's plain values. Each function gives nothing
// for a text that is no such value. White space around a value does not count.

// An integer of 64 bits, with or without a sign.
struct XMLInteger {
    std::uint64_t magnitude = 0;
    bool isNegative = false;
};

// Decimal, or hexadecimal after "0x".
std::optional<XMLInteger> integerFromXML(std::string_view text);
// Decimal, with a fraction and an exponent or without; "inf", "infinity" and "nan".
std::optional<double> realFromXML(std::string_view text);
// A moment in UTC as ISO 8601 has it, in seconds since 2001.
std::optional<double> dateFromXML(std::string_view text);

} // namespace NS
