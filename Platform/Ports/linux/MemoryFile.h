#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/linux/FileDescriptor.h"

#include <cstdint>
#include <span>
#include <sys/uio.h>

namespace NS {

// A sealed memory file with the pieces one after the other; none when the system refuses it.
FileDescriptor makeMemoryFile(std::span<const iovec> pieces);

// True for a memory file of exactly this length, all of it there, that nobody can change, shorten
// or lengthen any more.
bool isSealedMemoryFile(const FileDescriptor& file, std::uint64_t length) noexcept;

// The content of a sealed memory file, mapped for as long as the result lives. Nil when there is no
// room for it.
RefPtr<Data> mapMemoryFile(const FileDescriptor& file, std::uint64_t length);

} // namespace NS
