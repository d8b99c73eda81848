#include "Shell/FileURL.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Shell {

namespace {

constexpr std::string_view kScheme = "file://";
constexpr std::uint8_t kNoDigit = 16;

// A table, since a selection has megabytes of them: pchar of RFC 3986 and the slash.
constexpr std::array<bool, 256> kStandsInPath = [] {
    std::array<bool, 256> table{};
    constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                             "0123456789-._~!$&'()*+,;=:@/";
    for (const char c : kCharacters) {
        table[static_cast<unsigned char>(c)] = true;
    }
    return table;
}();

std::uint8_t digitOf(char c) noexcept {
    if (c >= '0' && c <= '9') {
        return static_cast<std::uint8_t>(c - '0');
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? static_cast<std::uint8_t>(lower - 'a' + 10) : kNoDigit;
}

// Whether a percent sign and two digits begin the text, for a byte that names may have.
bool beginsWithEncodedByte(std::string_view text) noexcept {
    if (text.size() < 3 || text[0] != '%') {
        return false;
    }
    const unsigned high = digitOf(text[1]);
    const unsigned low = digitOf(text[2]);
    const unsigned byte = high * 16 + low;
    return high != kNoDigit && low != kNoDigit && byte != 0 && byte != '/';
}

bool isPath(std::string_view text) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (kStandsInPath[static_cast<unsigned char>(text[i])]) {
            continue;
        }
        if (!beginsWithEncodedByte(text.substr(i))) {
            return false;
        }
        i += 2;
    }
    return text.starts_with('/');
}

} // namespace

NS::RefPtr<NS::URL> fileURLFromText(std::string_view text) {
    if (!text.starts_with(kScheme) || !isPath(text.substr(kScheme.size()))) {
        return nullptr;
    }
    return NS::make<NS::URL>(NS::String::fromAscii(text), nullptr);
}

} // namespace Shell
