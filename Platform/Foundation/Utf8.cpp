#include "Platform/Foundation/Utf8.h"

#include <cstdint>
#include <cstring>

namespace NS::Utf8 {

namespace {

unsigned byteAt(std::string_view bytes, std::size_t index) noexcept {
    return static_cast<unsigned char>(bytes[index]);
}

struct Lead {
    std::size_t length;
    char32_t bits;
    char32_t smallest; // a shorter form exists below it
};

Lead leadOf(unsigned byte) noexcept {
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {2, byte & 0x1FU, 0x80};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {3, byte & 0x0FU, 0x800};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {4, byte & 0x07U, 0x10000};
    }
    return {0, 0, 0};
}

} // namespace

// Eight bytes at a time, the last ones once more where they are no eight.
bool isAscii(std::string_view bytes) noexcept {
    std::uint64_t all = 0;
    constexpr std::size_t kStep = sizeof all;
    const auto look = [&](std::size_t at) {
        std::uint64_t eight;
        std::memcpy(&eight, bytes.data() + at, kStep);
        all |= eight;
    };
    if (bytes.size() < kStep) {
        for (const char c : bytes) {
            all |= static_cast<unsigned char>(c);
        }
        return (all & 0x80U) == 0;
    }
    for (std::size_t at = 0; at + kStep <= bytes.size(); at += kStep) {
        look(at);
    }
    look(bytes.size() - kStep);
    return (all & 0x8080808080808080ULL) == 0;
}

Decoded decodeFirst(std::string_view bytes) noexcept {
    const unsigned first = byteAt(bytes, 0);
    if (first < 0x80) {
        return {first, 1, true};
    }
    const Lead lead = leadOf(first);
    if (lead.length == 0 || bytes.size() < lead.length) {
        return {kReplacement, 1, false};
    }
    char32_t codePoint = lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
        const unsigned next = byteAt(bytes, i);
        if ((next & 0xC0U) != 0x80) {
            return {kReplacement, 1, false};
        }
        codePoint = (codePoint << 6U) | (next & 0x3FU);
    }
    const bool valid =
        codePoint >= lead.smallest && codePoint <= 0x10FFFF && !isSurrogate(codePoint);
    return valid ? Decoded{codePoint, lead.length, true} : Decoded{kReplacement, 1, false};
}

bool isValid(std::string_view bytes) noexcept {
    constexpr std::size_t kStep = 32;
    while (!bytes.empty()) {
        const std::string_view front = bytes.substr(0, kStep);
        if (isAscii(front)) {
            bytes.remove_prefix(front.size());
            continue;
        }
        const Decoded decoded = decodeFirst(bytes);
        if (!decoded.valid) {
            return false;
        }
        bytes.remove_prefix(decoded.length);
    }
    return true;
}

FromUtf16 codePointAtFront(std::u16string_view units) noexcept {
    const char32_t first = units[0];
    if (first >= 0xD800 && first <= 0xDBFF && units.size() > 1) {
        const char32_t second = units[1];
        if (second >= 0xDC00 && second <= 0xDFFF) {
            return {0x10000 + ((first - 0xD800) << 10U) + (second - 0xDC00), 2};
        }
    }
    return {first, 1};
}

void append(std::string& bytes, char32_t codePoint) {
    const auto put = [&](char32_t value) {
        bytes.push_back(static_cast<char>(value));
    };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | (codePoint >> 6U));
        put(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        put(0xE0 | (codePoint >> 12U));
        put(0x80 | ((codePoint >> 6U) & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    } else {
        put(0xF0 | (codePoint >> 18U));
        put(0x80 | ((codePoint >> 12U) & 0x3F));
        put(0x80 | ((codePoint >> 6U) & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
}

void appendUtf16(std::u16string& units, char32_t codePoint) {
    if (codePoint < 0x10000) {
        units.push_back(static_cast<char16_t>(codePoint));
    } else {
        units.push_back(static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10U)));
        units.push_back(static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF)));
    }
}

} // namespace NS::Utf8
