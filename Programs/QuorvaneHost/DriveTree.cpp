#include "Programs/QuorvaneHost/DriveTree.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

// A path goes to the system in pieces that it takes at once.
constexpr std::size_t kLongestPiece = 4000;

using Components = std::vector<std::string_view>;

// The components without "." and repeated slashes, which name nothing of their own.
Components componentsOf(std::string_view path) {
    if (!path.starts_with('/')) {
        throw Refusal("not a path on the drive: it does not begin with a slash");
    }
    if (path.find('\0') != std::string_view::npos) {
        throw Refusal("the path holds a NUL");
    }
    Components components;
    while (!path.empty()) {
        const std::size_t slash = path.find('/');
        const std::string_view component = path.substr(0, slash);
        path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
        if (component == "..") {
            throw Refusal("the path climbs with \"..\"");
        }
        if (!component.empty() && component != ".") {
            components.push_back(component);
        }
    }
    return components;
}

// Opens a path below a folder; no symbolic link and no ".." in one leads out of that folder.
int openBeneath(int folder, const std::string& path, std::uint64_t flags) {
    open_how how{};
    how.flags = flags | O_CLOEXEC;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    return static_cast<int>(::syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how));
}

[[noreturn]] void refuse(int error) {
    switch (error) {
    case EXDEV:
    case ELOOP:
        throw Refusal("the path leads out of the drive through a symbolic link");
    case ENOENT:
        throw Refusal("there is no such item");
    default:
        throw Refusal(std::system_category().message(error));
    }
}

NS::FileDescriptor openedBeneath(int folder, const std::string& path, std::uint64_t flags) {
    NS::FileDescriptor opened(openBeneath(folder, path, flags));
    if (!opened) {
        refuse(errno);
    }
    return opened;
}

NS::FileDescriptor openFolders(int root, const Components& components) {
    NS::FileDescriptor folder = openedBeneath(root, ".", O_PATH | O_DIRECTORY);
    for (auto next = components.begin(); next != components.end();) {
        std::string piece(*next++);
        while (next != components.end() && piece.size() + 1 + next->size() <= kLongestPiece) {
            piece.append("/").append(*next++);
        }
        folder = openedBeneath(folder.get(), piece, O_PATH | O_DIRECTORY);
    }
    return folder;
}

std::string joined(const Components& components) {
    std::string path;
    for (const std::string_view component : components) {
        path.append("/").append(component);
    }
    return path.empty() ? "/" : path;
}

// Where an open folder is; empty where the system does not tell.
std::string pathOf(int folder) {
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(folder);
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    return length < 0 || static_cast<std::size_t>(length) == path.size()
               ? std::string()
               : std::string(path.data(), static_cast<std::size_t>(length));
}

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { (void)::closedir(directory); }
};

} // namespace

std::string DriveEntry::systemPath() const {
    return "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name;
}

DriveTree::DriveTree(const std::string& path)
    : root_(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (!root_) {
        throw Refusal("the drive cannot be opened: " + systemError());
    }
    rootPath_ = pathOf(root_.get());
}

DriveEntry DriveTree::entryAt(std::string_view path) const {
    Components components = componentsOf(path);
    const std::string given = joined(components);
    if (components.empty()) {
        return {openFolders(root_.get(), {}), ".", "/"};
    }
    std::string name(components.back());
    components.pop_back();
    return entryIn(openFolders(root_.get(), components), std::move(name), given);
}

DriveEntry DriveTree::entryIn(NS::FileDescriptor folder, std::string name,
                              std::string_view given) const {
    const std::string absolute = pathOf(folder.get());
    const bool isKnown = !rootPath_.empty() && absolute.starts_with(rootPath_);
    std::string path = isKnown
                           ? absolute.substr(rootPath_ == "/" ? 0 : rootPath_.size()) + "/" + name
                           : std::string(given);
    return {std::move(folder), std::move(name), std::move(path)};
}

NS::FileDescriptor DriveTree::folderAt(std::string_view path) const {
    const DriveEntry entry = entryAt(path);
    NS::FileDescriptor folder(::openat(entry.folder.get(), entry.name.c_str(),
                                       O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        throw Refusal(errno == ENOENT ? "there is no such item" : "not a folder: " + systemError());
    }
    return folder;
}

NS::FileDescriptor DriveTree::madeFolderAt(std::string_view path) const {
    NS::FileDescriptor folder = openedBeneath(root_.get(), ".", O_PATH | O_DIRECTORY);
    for (const std::string_view component : componentsOf(path)) {
        const std::string name(component);
        if (::mkdirat(folder.get(), name.c_str(), 0777) != 0 && errno != EEXIST) {
            refuse(errno);
        }
        folder = openedBeneath(folder.get(), name, O_PATH | O_DIRECTORY | O_NOFOLLOW);
    }
    return folder;
}

bool existsIn(int folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

std::vector<std::string> entriesIn(int folder) {
    // Another descriptor, since reading moves it along and closing takes it.
    const std::unique_ptr<DIR, CloseDirectory> directory(
        ::fdopendir(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    std::vector<std::string> names;
    while (const dirent* const entry = directory ? ::readdir(directory.get()) : nullptr) {
        const std::string name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    return names;
}

std::string systemError() {
    return std::system_category().message(errno);
}
