#pragma once

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Tests {

// Long enough for a loaded machine under a sanitiser; only a failing test ever waits for it.
inline constexpr std::chrono::seconds kPatience{60};

// Waits until a condition holds that another process brings about; false after the limit.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit = kPatience);

// A running program with its output in files. Killed, if it still runs, when this object goes.
class Process {
  public:
    // Starts a program with this process's environment. Throws when it cannot be started.
    Process(const std::filesystem::path& program, std::vector<std::string> arguments,
            const std::filesystem::path& output, const std::filesystem::path& errors);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const noexcept { return pid_; }
    bool isRunning();
    void signal(int number) const;
    // The exit status, or 128 and the number of the signal that ended it; nothing when it still
    // runs after the limit.
    std::optional<int> waitForExit(std::chrono::milliseconds limit = kPatience);
    // Whether the system wrote a core dump of it, or handed one on, when a signal ended it.
    bool dumpedCore() const noexcept { return dumpedCore_; }
    // Waits until the kernel shows it in a state: 'S' sleeping, 'T' stopped.
    bool waitForState(char state) const;

    // How often it has gone to sleep since it began.
    long voluntarySwitches() const;

    std::string output() const;
    std::string errors() const;

  private:
    pid_t pid_ = -1;
    std::optional<int> status_;
    bool dumpedCore_ = false;
    std::filesystem::path output_;
    std::filesystem::path errors_;
};

std::string contentsOf(const std::filesystem::path& file);

} // namespace Tests
