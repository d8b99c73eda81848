#include "Programs/Json/PercentEncoding.h"

#include <charconv>

std::string percentEncoded(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7F && c != '%') {
            text.push_back(c);
        } else {
            text += {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
        }
    }
    return text;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
        if (text.front() != '%') {
            bytes.push_back(text.front());
            text.remove_prefix(1);
            continue;
        }
        const std::string_view digits = text.substr(1, 2);
        unsigned byte = 0;
        const char* const end = digits.data() + digits.size();
        if (digits.size() != 2 || std::from_chars(digits.data(), end, byte, 16).ptr != end) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<char>(byte));
        text.remove_prefix(3);
    }
    return bytes;
}
