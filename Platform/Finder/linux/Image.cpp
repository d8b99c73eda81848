#include "Platform/Finder/Image.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/SearchPaths.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace NS {

constinit const Class Image::kClass{.name = "NSImage", .superclass = &Object::kClass};

namespace {

constexpr const char* kIconsBelowData = "/icons/hicolor/scalable/apps/";

// Where a program's resources can be: beside it, then where the desktop looks for icons.
std::vector<std::string> dataFolders() {
    std::vector<std::string> folders;
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        folders.push_back((program.parent_path().parent_path() / "share").string());
    }
    folders.push_back(searchPathForDirectoryInDomain(SearchPathDirectory::kApplicationSupport,
                                                     SearchPathDomain::kUser)
                          ->fileSystemRepresentation());
    const char* const named = std::getenv("XDG_DATA_DIRS");
    std::istringstream list(named != nullptr && *named != '\0' ? named
                                                               : "/usr/local/share:/usr/share");
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.starts_with('/')) {
            folders.push_back(folder);
        }
    }
    return folders;
}

} // namespace

RefPtr<Image> Image::imageNamed(const String& name) {
    const std::string file = name.fileSystemRepresentation();
    if (file.empty() || file.find('/') != std::string::npos) {
        return nullptr;
    }
    for (const std::string& folder : dataFolders()) {
        const auto path =
            String::fromFileSystemRepresentation(folder + kIconsBelowData + file + ".svg");
        if (FileManager::defaultManager().fileExistsAtPath(*path)) {
            return make<Image>(name.copy(), path);
        }
    }
    return nullptr;
}

} // namespace NS
