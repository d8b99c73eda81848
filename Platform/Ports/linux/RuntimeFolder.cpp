#include "Platform/Ports/linux/RuntimeFolder.h"

#include "Platform/Foundation/SearchPaths.h"
#include "Platform/Foundation/String.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace NS {

namespace {

constexpr mode_t kPrivate = S_IRWXU;

bool isOwnFolder(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid();
}

std::string stateFolder() {
    const auto library =
        searchPathForDirectoryInDomain(SearchPathDirectory::kLibrary, SearchPathDomain::kUser);
    return library->fileSystemRepresentation();
}

// An existing folder is left as it is: open() decides whether it will do.
void makeFolder(const std::string& path) {
    const std::filesystem::path folder(path);
    std::error_code ignored; // what is missing shows when the folder is opened
    std::filesystem::create_directories(folder.parent_path(), ignored);
    (void)::mkdir(path.c_str(), kPrivate);
}

} // namespace

std::string RuntimeFolder::path() {
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/') {
        return std::string(runtime) + "/Quorvane";
    }
    const std::string ofUser = "/run/user/" + std::to_string(::geteuid());
    return isOwnFolder(ofUser) ? ofUser + "/Quorvane" : stateFolder() + "/Quorvane/run";
}

std::optional<RuntimeFolder> RuntimeFolder::open() {
    const std::string folder = path();
    makeFolder(folder);
    FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!opened || ::fstat(opened.get(), &status) != 0) {
        return std::nullopt;
    }
    if (status.st_uid != ::geteuid() || (status.st_mode & ALLPERMS) != kPrivate) {
        return std::nullopt;
    }
    return RuntimeFolder(std::move(opened));
}

sockaddr_un RuntimeFolder::address(std::string_view name) const noexcept {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (void)std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%.*s",
                        folder_.get(), static_cast<int>(name.size()), name.data());
    return address;
}

FileDescriptor RuntimeFolder::duplicate() const noexcept {
    return FileDescriptor(::fcntl(folder_.get(), F_DUPFD_CLOEXEC, 0));
}

} // namespace NS
