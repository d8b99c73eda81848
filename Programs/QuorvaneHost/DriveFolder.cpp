#include "Programs/QuorvaneHost/DriveFolder.h"

#include "Programs/QuorvaneHost/FolderWalk.h"

#include <fcntl.h>
#include <system_error>

namespace fs = std::filesystem;

DriveFolder::DriveFolder(const fs::path& folder) : path_(fs::canonical(folder).string()) {
    // Reading it once tells a file or a closed folder from a drive.
    (void)fs::directory_iterator(path_);
}

std::int64_t DriveFolder::bytesUsed() const {
    return static_cast<std::int64_t>(FolderContents::below(AT_FDCWD, path_).bytes);
}

std::int64_t DriveFolder::trashCount() const {
    const fs::path trash = fs::path(path_) / "Trash";
    std::error_code error;
    if (fs::symlink_status(trash, error).type() != fs::file_type::directory) {
        return 0;
    }
    // One that goes or closes meanwhile has those that it had till then.
    std::int64_t entries = 0;
    fs::directory_iterator entry(trash, error);
    while (!error && entry != fs::directory_iterator()) {
        ++entries;
        entry.increment(error);
    }
    return entries;
}
