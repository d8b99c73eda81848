#pragma once

#include <cstddef>
#include <fstream>
#include <string>

namespace Tests {

// A line of the process's status in bytes: "VmRSS", what is resident now; "VmHWM", the most that
// was.
inline std::size_t statusInBytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ':')) {
            return std::stoul(line.substr(name.size() + 1)) * 1024;
        }
    }
    return 0;
}

// How many bytes more than before are resident while an action runs, at the most.
template <class Action>
std::size_t peakMemoryOf(Action&& act) {
    std::ofstream("/proc/self/clear_refs") << '5'; // begins the count of the most anew
    const std::size_t before = statusInBytes("VmRSS");
    act();
    const std::size_t peak = statusInBytes("VmHWM");
    return peak > before ? peak - before : 0;
}

} // namespace Tests
