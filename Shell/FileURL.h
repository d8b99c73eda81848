#pragma once

#include "Platform/Foundation/URL.h"

#include <string_view>

namespace Shell {

// The URL of a text that came over the bus, or nil unless it is the file URL of an absolute path on
// this machine: "file:///", then what RFC 3986 lets stand in a path, every other byte
// percent-encoded. The bytes 0 and "/" are in no file's name and may not come encoded.
NS::RefPtr<NS::URL> fileURLFromText(std::string_view text);

} // namespace Shell
