#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/String.h"

#include <optional>

namespace NS {

class FileManager;

// An open file. A value that is moved, not copied, and closes what is still open when it goes.
//
// Not for use by two threads at once.
class FileHandle {
  public:
    // Opens a file of the default file manager. Never creates it: nil when it is not there or must
    // not be written.
    static std::optional<FileHandle> fileHandleForWritingAtPath(const String& path);
    // The same of another file manager.
    static std::optional<FileHandle> fileHandleForWritingAtPath_by(const String& path,
                                                                   FileManager& manager);

    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    ~FileHandle() { closeFile(); }

    // False when the file has no end to go to, such as a pipe.
    bool seekToEndOfFile();
    // False when not all of it was written.
    bool writeData(Bytes bytes);
    // Does nothing the second time. What is asked of a closed file is answered with false.
    void closeFile() noexcept;

  private:
    FileHandle(FileManager& manager, int file) noexcept : manager_(&manager), file_(file) {}

    FileManager* manager_; // null once it is closed
    int file_;
};

} // namespace NS
