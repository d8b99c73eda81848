#include "Shell/Client/WatchedFolders.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

namespace Shell {

namespace {

struct Free {
    void operator()(char* text) const noexcept { std::free(text); }
};

// Without symbolic links; nothing for what does not exist.
std::optional<std::string> resolved(std::string_view path) {
    const std::unique_ptr<char, Free> real(::realpath(std::string(path).c_str(), nullptr));
    return real ? std::optional<std::string>(real.get()) : std::nullopt;
}

std::string withoutSlashesAtEnd(std::string_view path) {
    const std::size_t end = path.find_last_not_of('/');
    return std::string(path.substr(0, end == std::string_view::npos ? 1 : end + 1));
}

std::string joined(const std::string& folder, std::string_view name) {
    return (folder == "/" ? "" : folder) + "/" + std::string(name);
}

// What follows a folder in the path of something in it, with its slash; nothing for anything else.
std::optional<std::string_view> partBelow(std::string_view folder, std::string_view path) {
    if (folder == "/") {
        return path.size() > 1 ? std::optional(path) : std::nullopt;
    }
    if (path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/') {
        return path.substr(folder.size());
    }
    return std::nullopt;
}

} // namespace

void WatchedFolders::set(std::vector<std::string> folders) {
    folders_ = std::move(folders);
    resolved_.clear();
    for (const std::string& folder : folders_) {
        resolved_.push_back(resolved(folder).value_or(folder));
    }
}

Placing WatchedFolders::placeResolved(std::string path) const {
    using Where = Placing::Where;
    bool beside = false;
    for (std::size_t i = 0; i < folders_.size(); ++i) {
        if (path == resolved_[i]) {
            return {Where::kWatched, folders_[i]};
        }
        if (const auto below = partBelow(resolved_[i], path)) {
            return {Where::kInside, withoutSlashesAtEnd(folders_[i]) + std::string(*below)};
        }
        beside = beside || path.starts_with(folders_[i]);
    }
    return {beside ? Where::kBeside : Where::kOutside, std::move(path)};
}

Placing WatchedFolders::placeFolder(std::string_view path) const {
    if (!path.starts_with('/')) {
        return {};
    }
    return placeResolved(resolved(path).value_or(withoutSlashesAtEnd(path)));
}

const std::string& WatchedFolders::Items::resolvedFolder(std::string_view folder) {
    const auto known = resolved_.find(folder);
    if (known != resolved_.end()) {
        return known->second;
    }
    std::string real = resolved(folder).value_or(std::string(folder));
    return resolved_.emplace(std::string(folder), std::move(real)).first->second;
}

Placing WatchedFolders::Items::place(std::string_view path) {
    if (!path.starts_with('/')) {
        return {};
    }
    const std::string whole = withoutSlashesAtEnd(path);
    const std::size_t slash = whole.rfind('/');
    const std::string_view name = std::string_view(whole).substr(slash + 1);
    // With a slash at its end a link is the folder that it leads to, as "." and ".." are folders.
    if (path.ends_with('/') || name == "." || name == "..") {
        return watched_.placeFolder(path);
    }
    const std::string_view folder = slash == 0 ? "/" : std::string_view(whole).substr(0, slash);
    return watched_.placeResolved(joined(resolvedFolder(folder), name));
}

} // namespace Shell
