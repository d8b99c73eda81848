#pragma once

#include <string>
#include <string_view>

namespace Inspection {

// Text from outside as a terminal may have it: control characters, those without width that turn
// or break a line, and bytes that are not UTF-8, become "\x1b" and the like. A line feed too; tabs
// stay.
std::string printable(std::string_view bytes);

} // namespace Inspection
