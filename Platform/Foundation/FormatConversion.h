#pragma once

#include "Platform/Foundation/StringBuilder.h"

#include <cstddef>
#include <cstdint>
#include <optional>

// How a conversion of a format writes its value; Format.h reads the format.
namespace NS {

// One conversion, between its "%" and its letter.
struct FormatConversion {
    enum class Length : std::uint8_t { kInt, kChar, kShort, kLong };

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

// A text, filled with blanks up to the width. The precision is the caller's to apply.
void appendPadded(StringBuilder& out, const FormatConversion& conversion, const String& text);
// The letters d and i.
void appendSigned(StringBuilder& out, const FormatConversion& conversion, std::int64_t value);
// The letters u, o, x and X.
void appendUnsigned(StringBuilder& out, const FormatConversion& conversion, std::uint64_t value);
// The letter p: as "%#x", but also for null.
void appendPointer(StringBuilder& out, const FormatConversion& conversion, const void* pointer);
// The letters f, e, g and a, small and capital.
void appendReal(StringBuilder& out, const FormatConversion& conversion, double value);

} // namespace NS
