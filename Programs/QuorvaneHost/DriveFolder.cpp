#include "Programs/QuorvaneHost/DriveFolder.h"

#include <system_error>

namespace fs = std::filesystem;

namespace {

// Visits the entries of a folder; of one that goes or closes meanwhile, those it had till then.
template <class Visitor>
void forEachEntry(const fs::path& folder, Visitor&& visit) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    while (!error && entry != fs::directory_iterator()) {
        visit(*entry);
        entry.increment(error);
    }
}

std::int64_t sizeOf(const fs::directory_entry& entry) {
    std::error_code error;
    const std::uintmax_t size = entry.file_size(error);
    return error ? 0 : static_cast<std::int64_t>(size);
}

// Each folder is walked by itself, so that one that fails takes no other with it.
std::int64_t bytesBelow(const fs::path& folder) {
    std::int64_t bytes = 0;
    forEachEntry(folder, [&](const fs::directory_entry& entry) {
        std::error_code error;
        const fs::file_type type = entry.symlink_status(error).type();
        if (type == fs::file_type::regular) {
            bytes += sizeOf(entry);
        } else if (type == fs::file_type::directory) {
            bytes += bytesBelow(entry.path());
        }
    });
    return bytes;
}

} // namespace

DriveFolder::DriveFolder(const fs::path& folder) : path_(fs::canonical(folder).string()) {
    // Reading it once tells a file or a closed folder from a drive.
    (void)fs::directory_iterator(path_);
}

std::int64_t DriveFolder::bytesUsed() const {
    return bytesBelow(path_);
}

std::int64_t DriveFolder::trashCount() const {
    const fs::path trash = fs::path(path_) / "Trash";
    std::error_code error;
    if (fs::symlink_status(trash, error).type() != fs::file_type::directory) {
        return 0;
    }
    std::int64_t entries = 0;
    forEachEntry(trash, [&](const fs::directory_entry&) { ++entries; });
    return entries;
}
