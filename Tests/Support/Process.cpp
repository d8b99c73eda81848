#include "Tests/Support/Process.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>

extern char** environ;

namespace Tests {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        // Between two looks the other process needs the processor more than this one does.
        (void)::poll(nullptr, 0, 2);
    }
    return true;
}

Process::Process(const std::filesystem::path& program, std::vector<std::string> arguments,
                 const std::filesystem::path& output, const std::filesystem::path& errors)
    : output_(output), errors_(errors) {
    std::string name = program.string();
    std::vector<char*> argv{name.data()};
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    ::posix_spawn_file_actions_addopen(&files, 1, output.c_str(), flags, 0600);
    ::posix_spawn_file_actions_addopen(&files, 2, errors.c_str(), flags, 0600);
    const int error = ::posix_spawn(&pid_, name.c_str(), &files, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw std::runtime_error("cannot start " + name);
    }
}

Process::~Process() {
    if (isRunning()) {
        signal(SIGKILL);
        (void)waitForExit();
    }
}

bool Process::isRunning() {
    return !waitForExit(std::chrono::milliseconds(0)).has_value();
}

void Process::signal(int number) const {
    ::kill(pid_, number);
}

std::optional<int> Process::waitForExit(std::chrono::milliseconds limit) {
    (void)waitUntil(
        [this] {
            int status = 0;
            if (!status_ && ::waitpid(pid_, &status, WNOHANG) == pid_) {
                status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
                dumpedCore_ = WIFSIGNALED(status) && WCOREDUMP(status);
            }
            return status_.has_value();
        },
        limit);
    return status_;
}

bool Process::waitForState(char state) const {
    const std::string file = "/proc/" + std::to_string(pid_) + "/stat";
    return waitUntil([&] {
        const std::string stat = contentsOf(file);
        const std::size_t end = stat.rfind(')');
        return end != std::string::npos && end + 2 < stat.size() && stat[end + 2] == state;
    });
}

long Process::voluntarySwitches() const {
    const std::string status = contentsOf("/proc/" + std::to_string(pid_) + "/status");
    const std::string field = "\nvoluntary_ctxt_switches:";
    const std::size_t at = status.find(field);
    return at == std::string::npos ? -1 : std::stol(status.substr(at + field.size()));
}

std::string Process::output() const {
    return contentsOf(output_);
}

std::string Process::errors() const {
    return contentsOf(errors_);
}

std::string contentsOf(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace Tests
