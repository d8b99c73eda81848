#include "Programs/Finder/Arguments.h"

#include "Programs/Finder/PathInput.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kStandardInput = "-";

bool takesItems(const MenuArguments& arguments) {
    return !arguments.kind || *arguments.kind == Shell::MenuKind::kItems ||
           *arguments.kind == Shell::MenuKind::kSidebar;
}

std::vector<std::string> pathsFromInput(const MenuArguments& arguments) {
    auto paths = pathsFromPipe(STDIN_FILENO);
    if (paths && paths->empty() && arguments.needsPathsFromInput && !arguments.kind) {
        throw UserError(
            "no paths came on standard input; \"-\" waits for them, --kind does without");
    }
    return std::move(paths).value_or(std::vector<std::string>());
}

std::vector<std::string> givenPaths(const MenuArguments& arguments) {
    if (arguments.paths.empty()) {
        return takesItems(arguments) ? pathsFromInput(arguments) : std::vector<std::string>();
    }
    std::vector<std::string> paths;
    for (const std::string& path : arguments.paths) {
        if (path == kStandardInput) {
            std::ranges::move(pathsFrom(STDIN_FILENO), std::back_inserter(paths));
        } else {
            paths.push_back(path);
        }
    }
    return paths;
}

std::string folderOf(const std::string& path) {
    const fs::path last = fs::path(path).filename();
    if (last == "." || last == "..") {
        return fs::canonical(path).parent_path().string();
    }
    const auto end = path.find_last_not_of('/');
    const auto slash = end == std::string::npos ? 0 : path.find_last_of('/', end);
    return slash == 0 ? "/" : path.substr(0, slash);
}

} // namespace

std::string absolutePath(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        throw UserError("a path is empty, or holds a NUL");
    }
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    if (error) {
        throw UserError("the current folder cannot be read: " + error.message());
    }
    return absolute.string();
}

std::string existingPath(const std::string& path) {
    const std::string absolute = absolutePath(path);
    std::error_code error;
    if (fs::symlink_status(absolute, error).type() == fs::file_type::not_found) {
        throw UserError("no such file or folder: " + path +
                        (path.find('\n') == std::string::npos
                             ? ""
                             : " (paths on standard input are separated by NUL)"));
    }
    if (error) {
        throw UserError(path + ": " + error.message());
    }
    return absolute;
}

MenuRequest menuRequestFrom(const MenuArguments& arguments) {
    MenuRequest request;
    for (const std::string& path : givenPaths(arguments)) {
        request.place.items.push_back(existingPath(path));
    }
    const bool anyItem = !request.place.items.empty();
    request.kind =
        arguments.kind.value_or(anyItem ? Shell::MenuKind::kItems : Shell::MenuKind::kContainer);
    if (!arguments.target.empty()) {
        request.place.target = existingPath(arguments.target);
    } else {
        request.place.target = anyItem ? folderOf(request.place.items.front()) : existingPath(".");
    }
    return request;
}
