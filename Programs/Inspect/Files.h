#pragma once

#include "Platform/Foundation/Data.h"

#include <cstddef>
#include <limits>
#include <string>

namespace Inspection {

// Files as a command line names them: "-" is standard input or output.

// The file for a message: its name in quotes, or what "-" stands for.
std::string nameOfInput(const std::string& file);
std::string nameOfOutput(const std::string& file);

// All bytes of a file. Raises Error when it cannot be read, or is longer than a limit.
NS::Ref<NS::Data> contentsOf(const std::string& file,
                             std::size_t limit = std::numeric_limits<std::size_t>::max());

// Replaces a file's contents by a file that is written beside it: whole, or not at all. A device, a
// pipe or what is open already ("/dev/stdout") gets the bytes as they are. Raises Error when they
// cannot be written, and leaves alone a file that its owner may not write: whoever asks, the
// superuser too, made it or found it read-only on purpose.
void writeContents(const std::string& file, NS::Bytes bytes);

} // namespace Inspection
