#pragma once

#include "Platform/Foundation/String.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace NS {

// Puts a text together from parts. Stays one byte a character until the first part that is not
// ASCII.
class StringBuilder {
  public:
    // Makes room for so many characters, which saves time where about as many follow.
    void reserve(std::size_t length) { narrow_.reserve(length); }

    void append(const String& text);
    void append(char asciiCharacter) { appendAscii({&asciiCharacter, 1}); }
    void appendAscii(std::string_view characters);
    void appendUnit(char16_t unit);
    // A code point above U+FFFF becomes a surrogate pair.
    void appendCodePoint(char32_t codePoint);
    void appendRepeated(char asciiCharacter, std::size_t count);

    std::size_t length() const noexcept { return wide_.empty() ? narrow_.size() : wide_.size(); }
    // The text so far.
    Ref<String> string() const;
    // The same in place, as long as all of it is ASCII; until the next change.
    bool isAscii() const noexcept { return wide_.empty(); }
    std::string_view ascii() const noexcept { return narrow_; }

  private:
    void widen();

    // Exactly one of the two is in use: the wide one as soon as it is not empty.
    std::string narrow_;
    std::u16string wide_;
};

} // namespace NS
