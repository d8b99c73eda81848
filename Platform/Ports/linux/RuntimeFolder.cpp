#include "Platform/Ports/linux/RuntimeFolder.h"

#include "Platform/Foundation/SearchPaths.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace NS {

namespace {

constexpr mode_t kPrivate = S_IRWXU;
constexpr std::string_view kFolder = "/Quorvane";
constexpr std::string_view kDescriptors = "/proc/self/fd/";
constexpr std::string_view kFolderInState = "/Quorvane/run";

// The variable's value when it is an absolute path; anything else counts as unset.
std::optional<std::string> absolutePathIn(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? std::optional<std::string>(value) : std::nullopt;
}

std::string stateFolder() {
    return searchPathForDirectoryInDomain(SearchPathDirectory::kLibrary, SearchPathDomain::kUser)
        ->fileSystemRepresentation();
}

// The login's own run-time folder, where there is one.
std::optional<std::string> loginFolder() {
    const std::string path = "/run/user/" + std::to_string(::geteuid());
    struct stat status {};
    const bool own = ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
                     status.st_uid == ::geteuid();
    return own ? std::optional<std::string>(path) : std::nullopt;
}

std::optional<std::string> runtimeBase() {
    const auto set = absolutePathIn("XDG_RUNTIME_DIR");
    return set ? set : loginFolder();
}

// What cannot be made shows when the folder is opened.
void makeWithParents(const std::string& path) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos;
         end = path.find('/', end + 1)) {
        (void)::mkdir(path.substr(0, end).c_str(), kPrivate);
    }
    (void)::mkdir(path.c_str(), kPrivate);
}

} // namespace

bool isNamed(int folder, const char* name, int file) noexcept {
    struct stat named {};
    struct stat held {};
    return ::fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(file, &held) == 0 &&
           named.st_ino == held.st_ino && named.st_dev == held.st_dev;
}

std::string RuntimeFolder::path() {
    const auto base = runtimeBase();
    return base ? *base + std::string(kFolder) : stateFolder() + std::string(kFolderInState);
}

std::optional<RuntimeFolder> RuntimeFolder::open() {
    return openAt(path());
}

std::optional<RuntimeFolder> RuntimeFolder::openOrMake() {
    const std::string folder = path();
    // A session's run-time folder is the system's to make, the user's state folder is anyone's.
    if (runtimeBase()) {
        (void)::mkdir(folder.c_str(), kPrivate);
    } else {
        makeWithParents(folder);
    }
    return openAt(folder);
}

std::optional<RuntimeFolder> RuntimeFolder::openAt(const std::string& path) {
    FileDescriptor opened(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!opened || ::fstat(opened.get(), &status) != 0 || status.st_uid != ::geteuid() ||
        (status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)) != kPrivate) {
        return std::nullopt;
    }
    return RuntimeFolder(std::move(opened));
}

sockaddr_un RuntimeFolder::address(std::string_view name) const noexcept {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    char* const last = std::end(address.sun_path) - 1;
    char* end = std::copy(kDescriptors.begin(), kDescriptors.end(), std::begin(address.sun_path));
    end = std::to_chars(end, last, folder_.get()).ptr;
    *end++ = '/';
    (void)name.copy(end, static_cast<std::size_t>(last - end)); // the names here are short
    return address;
}

FileDescriptor RuntimeFolder::duplicate() const noexcept {
    return FileDescriptor(::fcntl(folder_.get(), F_DUPFD_CLOEXEC, 0));
}

void RuntimeFolder::unlink(const std::string& name) const noexcept {
    (void)::unlinkat(folder_.get(), name.c_str(), 0);
}

} // namespace NS
