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
// How often a way is tried again on which something was moved meanwhile.
constexpr int kMostAttempts = 100;

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
int openBeneath(int folder, const std::string& path, std::uint64_t flags, std::uint64_t resolve) {
    open_how how{};
    how.flags = flags | O_CLOEXEC;
    how.resolve = resolve | RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    int opened = -1;
    int attempts = 0;
    do {
        opened = static_cast<int>(::syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how));
    } while (opened < 0 && (errno == EINTR || errno == EAGAIN) && ++attempts < kMostAttempts);
    return opened;
}

[[noreturn]] void refuse(int error, std::uint64_t resolve = 0) {
    switch (error) {
    case EXDEV:
    case ELOOP:
        if ((resolve & RESOLVE_NO_SYMLINKS) != 0) {
            throw Refusal("the path is too long to be followed through symbolic links");
        }
        throw Refusal("the path leads out of the drive through a symbolic link");
    case ENOENT:
        throw Refusal("there is no such item");
    default:
        throw Refusal(std::system_category().message(error));
    }
}

NS::FileDescriptor openedBeneath(int folder, const std::string& path, std::uint64_t flags,
                                 std::uint64_t resolve = 0) {
    NS::FileDescriptor opened(openBeneath(folder, path, flags, resolve));
    if (!opened) {
        refuse(errno, resolve);
    }
    return opened;
}

NS::FileDescriptor openFolders(int root, const Components& components, std::uint64_t resolve = 0) {
    NS::FileDescriptor folder = openedBeneath(root, ".", O_PATH | O_DIRECTORY);
    for (auto next = components.begin(); next != components.end();) {
        std::string piece(*next++);
        while (next != components.end() && piece.size() + 1 + next->size() <= kLongestPiece) {
            piece.append("/").append(*next++);
        }
        folder = openedBeneath(folder.get(), piece, O_PATH | O_DIRECTORY, resolve);
    }
    return folder;
}

std::string joined(const Components& components) {
    std::string path;
    for (const std::string_view component : components) {
        path.append("/").append(component);
    }
    return path;
}

// Where an open folder is on this machine; empty where the system does not tell.
std::string systemPathOf(int folder) {
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
}

DriveEntry DriveTree::entryAt(std::string_view path) const {
    Components components = componentsOf(path);
    if (components.empty()) {
        return {openFolders(root_.get(), {}), ".", "/"};
    }
    std::string name(components.back());
    components.pop_back();
    NS::FileDescriptor folder = openFolders(root_.get(), components);
    std::optional<std::string> real = pathOf(folder.get());
    if (!real) {
        // Then it is where it was said to be, unless a link has led elsewhere.
        folder = openFolders(root_.get(), components, RESOLVE_NO_SYMLINKS);
        real = joined(components);
    }
    std::string realPath = *real + "/" + name;
    return {std::move(folder), std::move(name), std::move(realPath)};
}

std::optional<std::string> DriveTree::pathOf(int folder) const {
    std::string root = systemPathOf(root_.get());
    const std::string path = systemPathOf(folder);
    if (root.empty() || !path.starts_with(root)) {
        return std::nullopt;
    }
    if (root == "/") {
        root.clear();
    }
    std::string below = path == "/" ? "" : path.substr(root.size());
    // A folder beside the drive may have a name that begins like the drive's.
    return below.empty() || below.front() == '/' ? std::optional(below) : std::nullopt;
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
