#include "Shell/Client/LinkFreePath.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Shell {

namespace {

// A descriptor, or -1 with the error.
int openWithoutLinks(const std::string& path, std::uint64_t flags, std::uint64_t resolve) noexcept {
    open_how how{};
    how.flags = flags | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS | resolve;
    return static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how));
}

// To open a folder for writing is refused once it has been found: one call, with nothing to close.
// Asked of what the system has in its cache alone, since otherwise it would have something mounted.
bool isKnownFolder(const std::string& path) noexcept {
    return openWithoutLinks(path, O_WRONLY | O_DIRECTORY, RESOLVE_CACHED) < 0 && errno == EISDIR;
}

} // namespace

bool isFreeOfLinks(const std::string& path) noexcept {
    if (isKnownFolder(path)) {
        return true;
    }
    // Opens nothing that anybody would notice, and has nothing mounted that is not there yet.
    const int file = openWithoutLinks(path, O_PATH, 0);
    if (file < 0) {
        return false;
    }
    (void)::close(file); // nothing was written to it
    return true;
}

bool isNoLink(const std::string& path) noexcept {
    char target = 0;
    return ::readlink(path.c_str(), &target, 1) < 0 && errno == EINVAL;
}

} // namespace Shell
