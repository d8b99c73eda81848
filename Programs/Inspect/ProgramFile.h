#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Inspection {

// A regular file that somebody named who is not trusted. Anything else is not even opened: that
// alone may let a writer to a named pipe go on, or rewind a tape.
class ProgramFile {
  public:
    // Follows symbolic links. No file when the path names none, or none that can be read.
    explicit ProgramFile(const std::string& path);

    explicit operator bool() const noexcept { return static_cast<bool>(file_); }
    // Names this very file for the user's processes while this object lives, whatever its own path
    // names by then.
    std::string path() const;
    // Nothing where the file ends earlier.
    std::optional<std::string> bytesAt(std::uint64_t offset, std::uint64_t count) const;

  private:
    NS::FileDescriptor file_;
};

} // namespace Inspection
