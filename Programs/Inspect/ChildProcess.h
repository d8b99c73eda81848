#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Inspection {

// How a program is run for its output.
struct ChildLimits {
    std::chrono::steady_clock::time_point deadline;
    std::size_t output; // in bytes
};

// Of address space, and of the processor's time in case that nobody is left to kill it at its
// deadline: many times what the debug information of a large library takes.
inline constexpr std::uint64_t kMostMemory = std::uint64_t{4} << 30U;
inline constexpr std::uint64_t kMostProcessorSeconds = 60;

struct ChildResult {
    enum class End { kDone, kNotThere, kFailed, kTooLate, kTooMuch };

    End end;
    std::string output; // what it printed, if it is done
};

// Runs a program, looked up in PATH, with arguments as they are: no shell sees them. It reads
// nothing, what it says on standard error is lost, and it gets no network address to fetch debug
// information from. Killed at the deadline, and when it prints too much; not begun after the
// deadline. kFailed stands for any exit status but zero; so ends who takes more than kMostMemory or
// kMostProcessorSeconds.
ChildResult runChild(std::vector<std::string> command, const ChildLimits& limits);

} // namespace Inspection
