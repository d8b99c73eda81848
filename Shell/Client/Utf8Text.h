#pragma once

#include <string_view>

namespace Shell {

// Whether bytes are UTF-8: characters that Unicode can have, each in its shortest form, none cut
// off.
bool isUtf8(std::string_view bytes) noexcept;

} // namespace Shell
