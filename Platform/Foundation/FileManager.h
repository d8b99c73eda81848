#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <optional>

namespace NS {

struct FileAttributes {
    enum class Kind : std::uint8_t { kRegular, kDirectory, kSymbolicLink, kOther };

    Kind kind;
    std::uint64_t size; // in bytes
    // Where the file system keeps none, the earlier of the other two dates. Nil when it is not
    // known.
    RefPtr<Date> creationDate;
    RefPtr<Date> modificationDate;
};

// The file system, as far as the system looks at it. Symbolic links are not followed. Failures show
// in the results; nothing is raised. Any thread.
class FileManager {
  public:
    virtual ~FileManager() = default;

    // The names in a folder, one level deep, hidden ones included, in the file system's own order;
    // nil when it cannot be read.
    virtual RefPtr<Array> contentsOfDirectoryAtPath(const String& path) = 0;
    virtual std::optional<FileAttributes> attributesOfItemAtPath(const String& path) = 0;
    // Makes a folder and those above it. True also when it is there already.
    virtual bool createDirectoryAtPath(const String& path) = 0;
    // Puts a file with this content in the place of whatever file is there, in one step.
    virtual bool createFileAtPath_contents(const String& path, Bytes contents) = 0;
    // Removes a file, or a folder with all that is in it.
    virtual bool removeItemAtPath(const String& path) = 0;
    // A whole file; nil when it cannot be read.
    virtual RefPtr<Data> contentsAtPath(const String& path) = 0;

    // The one in use: the system's unless a test put another in its place.
    static FileManager& defaultManager() noexcept;
    // Puts one in place, null for the system's, and returns the one before it.
    static FileManager* replace(FileManager* manager) noexcept;
};

} // namespace NS
