#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// UTF-8 and UTF-16, a code point at a time. Well-formedness as The Unicode Standard, table 3-7.
namespace NS::Utf8 {

inline constexpr char32_t kReplacement = 0xFFFD;
// A byte of a file name that is not UTF-8 is held as the lone surrogate of this plus the byte.
inline constexpr char32_t kEscapedByte = 0xDC00;

struct Decoded {
    char32_t codePoint;
    std::size_t length; // in bytes
    bool valid;
};

struct FromUtf16 {
    char32_t codePoint; // a lone surrogate stands for itself
    std::size_t length; // in units
};

bool isAscii(std::string_view bytes) noexcept;
// Whether they are well-formed from the first to the last.
bool isValid(std::string_view bytes) noexcept;

constexpr bool isSurrogate(char32_t codePoint) noexcept {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}
constexpr bool isEscapedByte(char32_t codePoint) noexcept {
    return codePoint >= kEscapedByte + 0x80 && codePoint <= kEscapedByte + 0xFF;
}

// The code point that the bytes begin with; they must not be empty.
Decoded decodeFirst(std::string_view bytes) noexcept;
// The code point that the units begin with; they must not be empty.
FromUtf16 codePointAtFront(std::u16string_view units) noexcept;

void append(std::string& bytes, char32_t codePoint);
void appendUtf16(std::u16string& units, char32_t codePoint);

} // namespace NS::Utf8
