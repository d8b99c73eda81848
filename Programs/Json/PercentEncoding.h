#pragma once

#include <optional>
#include <string>
#include <string_view>

// Bytes that are no text, as a text: how JSON shows file names that are not valid Unicode.

// The bytes with blanks, "%" and everything outside of printable ASCII as "%" and two digits.
std::string percentEncoded(std::string_view bytes);

// The bytes of such a text; a character that needed no encoding stands for itself. Nothing where a
// "%" is not followed by two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text);
