#include "FileManagers/GLib/FolderPath.h"

#include <utility>

namespace FileManagers {

namespace {

std::string startOf(GFile* folder) {
    const char* const path = g_file_is_native(folder) != FALSE ? g_file_peek_path(folder) : nullptr;
    std::string start = path != nullptr ? path : "";
    if (!start.empty() && !start.ends_with('/')) {
        start += '/';
    }
    return start;
}

} // namespace

std::string FolderPath::of(OwnedObject<GFile> folder, const char* name) {
    if (folder != folder_) {
        folder_ = std::move(folder);
        start_ = startOf(folder_.get());
    }
    return start_.empty() || name == nullptr ? std::string() : start_ + name;
}

} // namespace FileManagers
