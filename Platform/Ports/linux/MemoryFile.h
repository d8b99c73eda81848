#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Ports/linux/FileDescriptor.h"

#include <cstdint>
#include <span>

#include <sys/uio.h>

namespace NS {

// A sealed memory file with the pieces one after the other; none when the system refuses it.
FileDescriptor makeMemoryFile(std::span<const iovec> pieces);

// The content of a memory file of exactly this length, mapped for as long as the result lives. Nil
// unless the file is one that nobody can change, shorten or lengthen any more.
RefPtr<Data> mapMemoryFile(const FileDescriptor& file, std::uint64_t length);

} // namespace NS
