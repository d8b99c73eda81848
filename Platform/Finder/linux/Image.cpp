#include "Platform/Finder/Image.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/SearchPaths.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace NS {

constinit const Class Image::kClass{.name = "NSImage", .superclass = &Object::kClass};

namespace {

constexpr const char* kIconsBelowData = "/icons/hicolor/scalable/apps/";

// The folder of a file or a folder, by its absolute path; "" stands for "/".
std::string_view parentOf(std::string_view path) {
    return path.substr(0, path.rfind('/'));
}

// Beside the program's own folder; nothing where the system does not tell it.
std::optional<std::string> folderBesideTheProgram(std::string_view name) {
    std::array<char, PATH_MAX> place{};
    const ssize_t length = ::readlink("/proc/self/exe", place.data(), place.size());
    if (length <= 0) {
        return std::nullopt;
    }
    const std::string_view program(place.data(), static_cast<std::size_t>(length));
    return std::string(parentOf(parentOf(program))).append("/").append(name);
}

void appendAbsolute(std::vector<std::string>& folders, std::string_view list) {
    while (!list.empty()) {
        const std::string_view folder = list.substr(0, list.find(':'));
        if (folder.starts_with('/')) {
            folders.emplace_back(folder);
        }
        list.remove_prefix(std::min(folder.size() + 1, list.size()));
    }
}

// Where a program's resources can be: beside it, then where the desktop looks for icons.
std::vector<std::string> dataFolders() {
    std::vector<std::string> folders;
    if (const auto own = folderBesideTheProgram("share")) {
        folders.push_back(*own);
    }
    folders.push_back(searchPathForDirectoryInDomain(SearchPathDirectory::kApplicationSupport,
                                                     SearchPathDomain::kUser)
                          ->fileSystemRepresentation());
    const char* const named = std::getenv("XDG_DATA_DIRS");
    appendAbsolute(folders,
                   named != nullptr && *named != '\0' ? named : "/usr/local/share:/usr/share");
    return folders;
}

} // namespace

RefPtr<Image> Image::imageNamed(const String& name) {
    const std::string file = name.fileSystemRepresentation();
    if (file.empty() || file.find('/') != std::string::npos) {
        return nullptr;
    }
    for (const std::string& folder : dataFolders()) {
        const auto path = String::fromFileSystemRepresentation(
            std::string(folder).append(kIconsBelowData).append(file).append(".svg"));
        if (FileManager::defaultManager().fileExistsAtPath(*path)) {
            return make<Image>(name.copy(), path);
        }
    }
    return nullptr;
}

} // namespace NS
