#include "Shell/Client/LinkFreePath.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Shell {

// To open a folder for writing is refused once it has been found, and what is no folder is refused
// as well: so nothing is ever opened, which nobody would have to close.
bool isFolderFreeOfLinks(const std::string& path) noexcept {
    open_how how{};
    how.flags = O_WRONLY | O_DIRECTORY | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS;
    return ::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how) < 0 && errno == EISDIR;
}

} // namespace Shell
