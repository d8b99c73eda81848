#pragma once

#include "Platform/Foundation/String.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace NS {

// Puts a text together from parts. Stays one byte a character until the first part that is not
// ASCII.
class StringBuilder {
  public:
    // Makes room for so many characters, which saves time where about as many follow.
    void reserve(std::size_t length) {
        if (length > kShort) {
            reserveLong(length);
        }
    }

    void append(const String& text);
    void append(char asciiCharacter) { appendAscii({&asciiCharacter, 1}); }
    void appendAscii(std::string_view characters);
    void appendUnit(char16_t unit);
    // A code point above U+FFFF becomes a surrogate pair.
    void appendCodePoint(char32_t codePoint);
    void appendRepeated(char asciiCharacter, std::size_t count);

    std::size_t length() const noexcept { return wide_.empty() ? ascii().size() : wide_.size(); }
    // The text so far.
    Ref<String> string() const;
    // The same in place, as long as all of it is ASCII; until the next change.
    bool isAscii() const noexcept { return wide_.empty(); }
    std::string_view ascii() const noexcept {
        return isLong_ ? std::string_view(long_) : std::string_view(short_.data(), shortLength_);
    }

  private:
    // A text of no more is put together in place.
    static constexpr std::size_t kShort = 256;

    void reserveLong(std::size_t length);
    void appendNarrow(std::string_view characters);
    void widen();

    // One of the three is in use: the wide one as soon as it is not empty, else the long one where
    // the text came to be too long.
    std::array<char, kShort> short_; // as many as the length tells
    std::size_t shortLength_ = 0;
    bool isLong_ = false;
    std::string long_;
    std::u16string wide_;
};

} // namespace NS
