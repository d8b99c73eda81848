#include "Shell/Client/WatchedFolders.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace Shell {

namespace {

using Where = Placing::Where;

std::string_view withoutSlashesAtEnd(std::string_view path) {
    const std::size_t end = path.find_last_not_of('/');
    return path.substr(0, end == std::string_view::npos ? 1 : end + 1);
}

// Without symbolic links, "." and ".."; as far as the path exists and may be seen.
std::string resolved(std::string_view path) {
    const std::filesystem::path given(path);
    std::error_code error;
    std::filesystem::path real = std::filesystem::canonical(given, error);
    if (error) {
        real = std::filesystem::weakly_canonical(given, error);
    }
    if (error) {
        real = given.lexically_normal();
    }
    return std::string(withoutSlashesAtEnd(real.native()));
}

// What the system would read on from is shorter than what a file manager gave when it holds a NUL.
bool isAbsolute(std::string_view path) {
    return path.starts_with('/') && path.find('\0') == std::string_view::npos;
}

std::string joined(std::string_view folder, std::string_view name) {
    std::string path;
    path.reserve(folder.size() + 1 + name.size());
    return path.append(folder == "/" ? "" : folder).append("/").append(name);
}

bool isBelow(std::string_view path, std::string_view folder) {
    return folder == "/" ? path.size() > 1
                         : path.size() > folder.size() && path.starts_with(folder) &&
                               path[folder.size()] == '/';
}

// The same place below another folder.
std::string moved(std::string_view path, std::string_view from, std::string_view to) {
    const std::string_view rest = from == "/" ? path : path.substr(from.size());
    return std::string(to == "/" ? "" : to) + std::string(rest);
}

} // namespace

WatchedFolders::WatchedFolders(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        watched_.push_back({folder, resolved(folder)});
    }
}

Placing WatchedFolders::placeResolved(std::string path) const {
    Where where = Where::kOutside;
    const Watched* respelled = nullptr;
    for (const Watched& watched : watched_) {
        if (path == watched.resolved || path == watched.spelling) {
            return {Where::kWatched, watched.spelling};
        }
        if (isBelow(path, watched.resolved)) {
            where = Where::kInside;
            respelled = watched.resolved == watched.spelling ? nullptr : &watched;
        } else if (isBelow(path, watched.spelling)) {
            where = Where::kInside;
        } else if (where == Where::kOutside && path.starts_with(watched.spelling)) {
            where = Where::kBeside;
        }
    }
    if (respelled != nullptr) {
        path = moved(path, respelled->resolved, respelled->spelling);
    }
    return {where, std::move(path)};
}

Placing WatchedFolders::placeFolder(std::string_view path) const {
    return isAbsolute(path) ? placeResolved(resolved(path)) : Placing();
}

Placing WatchedFolders::placeItem(std::string_view path) {
    if (!isAbsolute(path)) {
        return {};
    }
    const std::size_t slash = path.rfind('/');
    const std::string_view name = path.substr(slash + 1);
    // With a slash at its end a link is the folder that it leads to, as "." and ".." are folders.
    if (name.empty() || name == "." || name == "..") {
        return placeResolved(resolved(path));
    }
    return placeResolved(joined(resolvedFolder(path.substr(0, slash)), name));
}

const std::string& WatchedFolders::resolvedFolder(std::string_view folder) {
    const auto known = resolvedFolders_.find(folder);
    if (known != resolvedFolders_.end()) {
        return known->second;
    }
    std::string real = resolved(folder.empty() ? "/" : folder);
    return resolvedFolders_.emplace(folder, std::move(real)).first->second;
}

} // namespace Shell
