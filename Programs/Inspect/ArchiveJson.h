#pragma once

#include "Platform/Foundation/Data.h"

#include <ostream>

namespace Inspection {

// Prints what a keyed archive, binary or XML, says, as JSON (Docs/inspector.md). It is read as it
// stands and not restored: classes need not be known, and nothing is merged or left out.
//
// Raises Error, before anything is printed, for bytes that are no keyed archive or a damaged one,
// for objects deeper within one another than NS::Limits::kDepth, and where what is referred to
// again and again would come to more than 256 MiB and 64 times the archive. Time and memory are in
// proportion to the archive and to what is printed.
void printArchive(NS::Bytes archive, std::ostream& out);

} // namespace Inspection
