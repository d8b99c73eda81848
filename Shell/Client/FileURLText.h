#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Shell {

// Paths as they cross the bus: file URLs (RFC 8089 without a host), each byte that a URL does not
// hold as it stands percent-encoded, whatever text the bytes are.

// The file URL of an absolute path.
std::string fileURLOf(std::string_view path);
// The path of a file URL, without slashes at its end unless it is the root; nothing for other text.
std::optional<std::string> pathOfFileURL(std::string_view url);

} // namespace Shell
