#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Why the host does not do what it was asked, for the journal.
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// An entry of the drive, held by its folder: the name cannot lead elsewhere, whatever happens to
// the folders above meanwhile.
struct DriveEntry {
    NS::FileDescriptor folder;
    std::string name; // "." for the drive itself
    std::string path; // relative to the drive, without symbolic links, repeated slashes and "."

    // A path for calls that know no folder descriptors; follows no symbolic link before the entry
    // itself, and holds as long as the entry does.
    std::string systemPath() const;
};

// The drive's files by the paths that an extension sends. Bytes, as the file system has them.
class DriveTree {
  public:
    // Throws Refusal when the folder cannot be opened.
    explicit DriveTree(const std::string& path);

    // The entry at a path relative to the drive, which begins with "/". Symbolic links in its
    // folders are followed as long as they stay within the drive; the entry itself is not, and need
    // not exist. Throws Refusal for a path that is not of this form, that climbs with "..", whose
    // folders do not exist, that leads out of the drive, or that leads through links to where the
    // system cannot tell it for its length.
    DriveEntry entryAt(std::string_view path) const;
    // The folder at such a path, open for reading. Its last component is not followed either.
    NS::FileDescriptor folderAt(std::string_view path) const;

    // The folder at such a path, with those that are missing made. Follows no symbolic link at all.
    NS::FileDescriptor madeFolderAt(std::string_view path) const;

  private:
    // Where an open folder is, "" for the drive itself; nothing where the system does not tell, or
    // where it has left the drive meanwhile.
    std::optional<std::string> pathOf(int folder) const;

    NS::FileDescriptor root_;
};

// Whether an entry of that name is in an open folder.
bool existsIn(int folder, const std::string& name);
// The names of an open folder's entries, in no particular order.
std::vector<std::string> entriesIn(int folder);
// The text of the system's last error.
std::string systemError();
