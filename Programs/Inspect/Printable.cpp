#include "Programs/Inspect/Printable.h"

#include "Platform/Foundation/Utf8.h"

#include <algorithm>

namespace Inspection {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Controls, and what has no width: it ends lines, turns the direction of what is around it or hides
// in a word, so that the terminal shows another text than there is.
constexpr Range kUnshown[] = {
    {0x00,   0x08  },
    {0x0A,   0x1F  },
    {0x7F,   0x9F  },
    {0x061C, 0x061C},
    {0x200B, 0x200F},
    {0x2028, 0x202E},
    {0x2066, 0x2069},
    {0xFEFF, 0xFEFF},
};

bool isUnshown(char32_t character) noexcept {
    return std::ranges::any_of(kUnshown, [character](const Range& range) {
        return range.first <= character && character <= range.last;
    });
}

void appendEscaped(std::string& text, std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        text += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
    }
}

} // namespace

std::string printable(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const NS::Utf8::Decoded first = NS::Utf8::decodeFirst(bytes);
        const std::string_view taken = bytes.substr(0, first.length);
        if (first.valid && !isUnshown(first.codePoint)) {
            text += taken;
        } else {
            appendEscaped(text, taken);
        }
        bytes.remove_prefix(taken.size());
    }
    return text;
}

} // namespace Inspection
