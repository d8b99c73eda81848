#include "Programs/QuorvaneHost/DriveFolder.h"

#include <limits>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// Walks a folder as far as it can be read; what fails on the way is left out.
template <class Iterator, class Visitor>
void walk(const fs::path& folder, Visitor&& visit) {
    std::error_code error;
    Iterator entry(folder, fs::directory_options::skip_permission_denied, error);
    while (!error && entry != Iterator()) {
        visit(*entry);
        entry.increment(error);
    }
}

std::int64_t sizeOf(const fs::directory_entry& entry) {
    std::error_code error;
    if (entry.symlink_status(error).type() != fs::file_type::regular || error) {
        return 0;
    }
    const std::uintmax_t size = entry.file_size(error);
    return error ? 0 : static_cast<std::int64_t>(size);
}

} // namespace

DriveFolder::DriveFolder(const fs::path& folder) : path_(fs::canonical(folder).string()) {
    // Reading it once tells a file or a closed folder from a drive.
    (void)fs::directory_iterator(path_);
}

std::int64_t DriveFolder::bytesUsed() const {
    std::int64_t bytes = 0;
    walk<fs::recursive_directory_iterator>(
        path_, [&](const fs::directory_entry& entry) { bytes += sizeOf(entry); });
    return bytes;
}

std::int64_t DriveFolder::trashCount() const {
    const fs::path trash = fs::path(path_) / "Trash";
    std::error_code error;
    if (fs::symlink_status(trash, error).type() != fs::file_type::directory) {
        return 0;
    }
    std::int64_t entries = 0;
    walk<fs::directory_iterator>(trash, [&](const fs::directory_entry&) { ++entries; });
    return entries;
}
