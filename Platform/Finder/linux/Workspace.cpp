#include "Platform/Finder/Workspace.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace NS {

constinit const Class Workspace::kClass{.name = "NSWorkspace", .superclass = &Object::kClass};

namespace {

constexpr const char* kOpener = "xdg-open";

// Starts the opener in a session of its own, with no signal blocked or ignored as some are here.
int spawnOpener(const char* path) noexcept {
    posix_spawnattr_t attributes;
    if (const int error = ::posix_spawnattr_init(&attributes); error != 0) {
        return error;
    }
    sigset_t signals;
    (void)::sigemptyset(&signals);
    (void)::posix_spawnattr_setsigmask(&attributes, &signals);
    (void)::sigfillset(&signals);
    (void)::posix_spawnattr_setsigdefault(&attributes, &signals);
    (void)::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                      POSIX_SPAWN_SETSIGDEF);
    const std::array<const char*, 3> arguments{kOpener, path, nullptr};
    pid_t opener = 0;
    const int error = ::posix_spawnp(&opener, kOpener, nullptr, &attributes,
                                     const_cast<char* const*>(arguments.data()), environ);
    (void)::posix_spawnattr_destroy(&attributes);
    return error;
}

} // namespace

Ref<Workspace> Workspace::sharedWorkspace() {
    static const Ref<Workspace>& workspace = *new Ref<Workspace>(make<Workspace>());
    return workspace;
}

bool Workspace::openFile(const RefPtr<String>& path) {
    if (!path) {
        return false;
    }
    const std::string bytes = path->fileSystemRepresentation();
    // The opener becomes an orphan, so that nobody here has to wait for its end.
    const pid_t starter = ::fork();
    if (starter == 0) {
        ::_exit(spawnOpener(bytes.c_str()) == 0 ? 0 : 1);
    }
    int status = -1;
    while (starter > 0 && ::waitpid(starter, &status, 0) < 0 && errno == EINTR) {
    }
    return starter > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace NS
