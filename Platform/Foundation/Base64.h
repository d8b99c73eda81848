#pragma once

#include "Platform/Foundation/Data.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NS {

// Bytes as text of 64 letters (RFC 4648, section 4), padded, on one line.
std::string base64Encoded(Bytes bytes);

// The bytes of such a text, in which white space may stand anywhere. Nothing for any other text.
std::optional<std::vector<std::byte>> base64Decoded(std::string_view text);

} // namespace NS
