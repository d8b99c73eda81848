#include "Programs/Inspect/Printable.h"

#include "Platform/Foundation/Utf8.h"

namespace Inspection {

namespace {

bool isControl(char32_t character) noexcept {
    return (character < 0x20 && character != U'\t') || (character >= 0x7F && character < 0xA0);
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
        if (first.valid && !isControl(first.codePoint)) {
            text += taken;
        } else {
            appendEscaped(text, taken);
        }
        bytes.remove_prefix(taken.size());
    }
    return text;
}

} // namespace Inspection
