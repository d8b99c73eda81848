#include "Shell/Client/Utf8Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Shell {

namespace {

// Set in each byte that is not ASCII.
constexpr std::uint64_t kHighBits = 0x8080'8080'8080'8080;

// How many bytes they begin with that are ASCII, as most texts are to their end: eight at a time.
std::size_t lengthOfASCII(std::string_view bytes) noexcept {
    std::size_t at = 0;
    for (std::uint64_t word = 0; at + sizeof word <= bytes.size(); at += sizeof word) {
        std::memcpy(&word, bytes.data() + at, sizeof word);
        if ((word & kHighBits) != 0) {
            break;
        }
    }
    while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80) {
        ++at;
    }
    return at;
}

// A character of more than one byte: its first byte, its second, and how many it has. All further
// ones are from 80 to BF.
struct Form {
    unsigned char firstFrom;
    unsigned char firstTo;
    unsigned char secondFrom;
    unsigned char secondTo;
    std::size_t length;
};

// Left out are longer forms of what has a shorter one, the surrogates of UTF-16, and what is beyond
// the last plane.
constexpr Form kForms[] = {
    {0xC2, 0xDF, 0x80, 0xBF, 2},
    {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4},
    {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool isWithin(char byte, unsigned char from, unsigned char to) noexcept {
    const auto value = static_cast<unsigned char>(byte);
    return value >= from && value <= to;
}

bool isCharacter(std::string_view bytes, const Form& form) noexcept {
    return isWithin(bytes[1], form.secondFrom, form.secondTo) &&
           std::ranges::all_of(bytes.substr(2, form.length - 2),
                               [](char byte) { return isWithin(byte, 0x80, 0xBF); });
}

// How many bytes the character has that they begin with, which is more than one; 0 for none.
std::size_t lengthOfCharacter(std::string_view bytes) noexcept {
    for (const Form& form : kForms) {
        if (isWithin(bytes.front(), form.firstFrom, form.firstTo)) {
            return bytes.size() >= form.length && isCharacter(bytes, form) ? form.length : 0;
        }
    }
    return 0;
}

} // namespace

bool isUtf8(std::string_view bytes) noexcept {
    for (;;) {
        bytes.remove_prefix(lengthOfASCII(bytes));
        if (bytes.empty()) {
            return true;
        }
        const std::size_t length = lengthOfCharacter(bytes);
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
}

} // namespace Shell
