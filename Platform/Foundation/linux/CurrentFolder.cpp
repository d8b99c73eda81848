#include "Platform/Foundation/CurrentFolder.h"

#include <filesystem>
#include <sys/stat.h>

namespace NS::CurrentFolder {

std::string path() {
    std::error_code gone;
    const std::string folder = std::filesystem::current_path(gone).native();
    return folder == "/" ? std::string() : folder;
}

bool isFolder(const std::string& path) noexcept {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace NS::CurrentFolder
