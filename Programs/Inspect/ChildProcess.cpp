#include "Programs/Inspect/ChildProcess.h"

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace Inspection {

namespace {

using End = ChildResult::End;

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<char*> environmentWithoutServers() {
    std::vector<char*> kept;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (!std::string_view(*variable).starts_with("DEBUGINFOD_URLS=")) {
            kept.push_back(*variable);
        }
    }
    kept.push_back(nullptr);
    return kept;
}

int millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
}

// Waits until something can be read. False at the deadline, and when the system refuses.
bool waitFor(int descriptor, std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        pollfd ready{descriptor, POLLIN, 0};
        const int count = ::poll(&ready, 1, millisecondsUntil(deadline));
        if (count > 0) {
            return true;
        }
        const bool goesOn =
            count < 0 ? errno == EINTR : std::chrono::steady_clock::now() < deadline;
        if (!goesOn) {
            return false;
        }
    }
}

// Killed, if it still runs, and waited for when this object goes.
class Child {
  public:
    explicit Child(pid_t pid) noexcept : pid_(pid) {}
    ~Child() {
        if (pid_ > 0) {
            (void)::kill(pid_, SIGKILL);
            (void)wait();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // False when it still runs at the deadline.
    bool endsBefore(std::chrono::steady_clock::time_point deadline) const;
    // True when it ended with status 0.
    bool wait() noexcept {
        int status = 0;
        pid_t ended = 0;
        do {
            ended = ::waitpid(pid_, &status, 0);
        } while (ended < 0 && errno == EINTR);
        pid_ = -1;
        return ended > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

  private:
    pid_t pid_;
};

bool Child::endsBefore(std::chrono::steady_clock::time_point deadline) const {
    // The C library's own function has C++'s linkage in its header, and none in the library.
    const NS::FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
    return waitFor(process.get(), deadline);
}

// -1 when there is no such program.
pid_t spawn(std::vector<std::string>& command, int output) {
    posix_spawn_file_actions_t files{};
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const int error =
        ::posix_spawnp(&pid, command.front().c_str(), &files, nullptr, pointersTo(command).data(),
                       environmentWithoutServers().data());
    ::posix_spawn_file_actions_destroy(&files);
    return error == 0 ? pid : -1;
}

void lower(pid_t process, decltype(RLIMIT_AS) resource, rlim_t most) noexcept {
    rlimit limit{};
    if (::prlimit(process, resource, nullptr, &limit) == 0) {
        limit.rlim_max = std::min(limit.rlim_max, most);
        limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
        (void)::prlimit(process, resource, &limit, nullptr); // the deadline holds all the same
    }
}

// All that comes out of a pipe until its other end is closed.
End readAll(int pipe, const ChildLimits& limits, std::string& output) {
    std::array<char, 16384> buffer;
    while (waitFor(pipe, limits.deadline)) {
        const ssize_t length = ::read(pipe, buffer.data(), buffer.size());
        if (length == 0) {
            return End::kDone;
        }
        if (length < 0 && errno != EINTR) {
            return End::kFailed;
        }
        output.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
        if (output.size() > limits.output) {
            return End::kTooMuch;
        }
    }
    return End::kTooLate;
}

} // namespace

ChildResult runChild(std::vector<std::string> command, const ChildLimits& limits) {
    if (std::chrono::steady_clock::now() >= limits.deadline) {
        return {End::kTooLate, {}};
    }
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {End::kFailed, {}};
    }
    const NS::FileDescriptor reading(ends[0]);
    NS::FileDescriptor writing(ends[1]);
    const pid_t pid = spawn(command, writing.get());
    writing.reset();
    if (pid < 0) {
        return {End::kNotThere, {}};
    }
    Child child(pid);
    lower(pid, RLIMIT_AS, kMostMemory);
    lower(pid, RLIMIT_CPU, kMostProcessorSeconds);
    std::string output;
    End end = readAll(reading.get(), limits, output);
    // A program may close its output and go on.
    if (end == End::kDone && !child.endsBefore(limits.deadline)) {
        end = End::kTooLate;
    }
    if (end == End::kDone && !child.wait()) {
        end = End::kFailed;
    }
    return {end, end == End::kDone ? std::move(output) : std::string()};
}

} // namespace Inspection
