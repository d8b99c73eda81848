#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/FileAppender.h"
#include "Platform/Foundation/FileFolder.h"
#include "Platform/Foundation/FileHandle.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace NS {

// What the file system tells of an entry itself; a symbolic link is not followed.
struct FileAttributes {
    enum class Kind : std::uint8_t { kRegular, kDirectory, kSymbolicLink, kOther };

    Kind kind;
    std::uint64_t size; // in bytes
    // Where the file system keeps none, the earlier of modification and change of the entry.
    RefPtr<Date> creationDate;
    RefPtr<Date> modificationDate;
};

// The file system as the system uses it. Failures are told by results; nothing raises. Any thread.
//
// An interface, so that a test can put a file system in memory in its place: birth times cannot be
// set on a real one.
class FileManager {
  public:
    FileManager() = default;
    virtual ~FileManager() = default;
    FileManager(const FileManager&) = delete;
    FileManager& operator=(const FileManager&) = delete;

    // The one in use: the operating system's, unless a test put another in its place.
    static FileManager& defaultManager() noexcept;
    // Puts a file manager in place, null for the operating system's, and returns the one before it,
    // null for the operating system's.
    static FileManager* replace(FileManager* manager) noexcept;

    // Follows symbolic links.
    virtual bool fileExistsAtPath(const String& path) = 0;
    // Nil when there is no such entry.
    virtual std::optional<FileAttributes> attributesOfItemAtPath(const String& path) = 0;
    // The names of a folder's entries in the order in which the file system returns them, hidden
    // ones included, without "." and "..". Nil when the folder cannot be read.
    virtual RefPtr<Array> contentsOfDirectoryAtPath(const String& path) = 0;
    // A folder whose entries are many, to be asked for by their names. Null when it cannot be read.
    virtual std::unique_ptr<FileFolder> folderAtPath(const String& path);
    // A regular file's bytes. Nil when it cannot be read, or is longer than kLongestContents.
    virtual RefPtr<Data> contentsAtPath(const String& path) = 0;

    // Makes a folder and every missing one above it, for this user alone. True when the folder is
    // there afterwards.
    virtual bool createDirectoryAtPath(const String& path) = 0;
    // Puts a file for this user alone in place of what was there: whole, or not at all. The folder
    // must be there.
    virtual bool createFileAtPath_contents(const String& path, Bytes contents) = 0;
    // What writes behind the end of a file, which need not be there yet. Must not outlive the file
    // manager.
    virtual std::unique_ptr<FileAppender> appenderForPath(const String& path);
    // Removes an entry, and what a folder holds. A symbolic link goes, what it points to stays.
    // False when something is left.
    virtual bool removeItemAtPath(const String& path) = 0;

    // What is read whole are settings and markers; a file beyond this is none of them and would
    // only eat memory.
    static constexpr std::size_t kLongestContents = std::size_t{64} << 20U;

  protected:
    // What stands behind a FileHandle: a number of the file manager's own.
    friend class FileHandle;
    virtual std::optional<int> openForWriting(const String& path) = 0;
    virtual bool seekToEnd(int file) = 0;
    virtual bool write(int file, Bytes bytes) = 0;
    virtual void close(int file) noexcept = 0;
};

// Whether the operating system has a folder at a path, or a link to one, whatever file manager is
// in use. What cannot be looked at is no folder. Any thread.
bool isSystemFolder(const std::string& path) noexcept;

// Puts a file manager in place for as long as it lives. For tests.
class ScopedFileManager {
  public:
    explicit ScopedFileManager(FileManager& manager) noexcept
        : previous_(FileManager::replace(&manager)) {}
    ~ScopedFileManager() { FileManager::replace(previous_); }
    ScopedFileManager(const ScopedFileManager&) = delete;
    ScopedFileManager& operator=(const ScopedFileManager&) = delete;

  private:
    FileManager* previous_;
};

} // namespace NS
