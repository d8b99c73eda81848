#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/String.h"

#include <optional>
#include <utility>

namespace NS {

// An open file; closed when it goes. Belongs to one thread at a time.
class FileHandle {
  public:
    // Opens a file that is there, without emptying it; nothing when there is none or it cannot be
    // written.
    static std::optional<FileHandle> fileHandleForWritingAtPath(const String& path);
    FileHandle(FileHandle&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
    FileHandle& operator=(FileHandle&&) = delete;
    ~FileHandle();

    // False when the system refuses; the position is then as it was.
    bool seekToEndOfFile();
    // False when not everything was written.
    bool writeData(Bytes bytes);

  private:
    explicit FileHandle(int file) noexcept : file_(file) {}

    int file_;
};

} // namespace NS
