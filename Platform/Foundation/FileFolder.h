#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/String.h"

#include <optional>

namespace NS {

// A folder whose entries are asked for by their names: the system looks up a name in it, and not a
// path from the root each time. It stays the folder that it was, also when another takes its path.
//
// Comes from FileManager::folderAtPath(). Failures are told by results. Not for use by two threads
// at once.
class FileFolder {
  public:
    FileFolder() = default;
    virtual ~FileFolder() = default;
    FileFolder(const FileFolder&) = delete;
    FileFolder& operator=(const FileFolder&) = delete;

    // Strings: what FileManager::contentsOfDirectoryAtPath() gave when the folder was opened.
    virtual const Array& names() const noexcept = 0;
    // FileAttributes::creationDate, in seconds since 2001. Nothing when there is no such entry.
    virtual std::optional<double> creationTimeOfItem(const String& name) = 0;
    // The same as FileManager::removeItemAtPath().
    virtual bool removeItem(const String& name) = 0;
};

} // namespace NS
