#pragma once

#include "Programs/Inspect/ProgramFile.h"

#include <optional>
#include <string>

namespace Inspection {

// What tells the build of a program or library from all others, in lower-case hexadecimal; nothing
// for no file, or one that is no program of this kind of machine or carries no build id. The file
// is not trusted: what it says of itself is checked against its length.
std::optional<std::string> buildIdOf(const ProgramFile& file);

} // namespace Inspection
