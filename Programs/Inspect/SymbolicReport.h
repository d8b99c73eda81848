#pragma once

#include "Programs/Inspect/SourceLines.h"

#include <ostream>
#include <string_view>

namespace Inspection {

// Prints a crash report as it is, with the source lines of each frame below it, where debug
// information is at hand. A module is looked at only where its path names a regular file of the
// very build that the report tells of. Why others are left as they are goes to `notes`, a line for
// each. Raises Error, and prints nothing, for what is no crash report.
void printReport(std::string_view text, const SourceLookup& lookup, std::ostream& out,
                 std::ostream& notes);

} // namespace Inspection
