#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/String.h"

#include <optional>

namespace NS {

class FileManager;

// A file that is open to be appended to. A value that is moved, not copied: a log line is opened,
// written and closed, and an object of its own would be a good part of that. Closes what is still
// open when it goes.
//
// Not for use by two threads at once.
class FileHandle {
  public:
    // Opens a file of the default file manager. Never creates it: nil when it is not there or must
    // not be written.
    static std::optional<FileHandle> fileHandleForAppendingAtPath(const String& path);

    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    ~FileHandle() { closeFile(); }

    // Writes behind the end that the file has at that moment, whoever else writes to it. False when
    // not all of it was written, as in a file that has no end, such as a pipe.
    bool appendData(Bytes bytes);
    // Does nothing the second time. What is asked of a closed file is answered with false.
    void closeFile() noexcept;

  private:
    FileHandle(FileManager& manager, int file) noexcept : manager_(&manager), file_(file) {}

    FileManager* manager_; // null once it is closed
    int file_;
};

} // namespace NS
