#pragma once

#include "Platform/Foundation/linux/BuildId.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace NS {

// A program or library in this process's memory.
struct LoadedModule {
    std::uintptr_t start;
    std::uintptr_t end;
    // What is to be taken from an address in memory to have the one that its file was linked for.
    std::uintptr_t bias;
    BuildId buildId;
    // As the system tells it, cut off where it is longer; ended by a zero byte.
    std::array<char, 1024> path;

    std::string_view pathText() const noexcept { return path.data(); }
    // The file's name without its folder.
    std::string_view name() const noexcept;
    bool holds(std::uintptr_t address) const noexcept { return address >= start && address < end; }
};

// The programs and libraries in this process's memory, in the order of their addresses. In storage
// of its own, to be made before it is needed; 128 at the most. Safe in a signal handler.
class LoadedModules {
  public:
    // Asks the kernel. Looks only at files that code is run from; one that is no longer as long as
    // it was mapped, and so faults, is there without its build id.
    void read() noexcept;

    std::span<const LoadedModule> list() const noexcept { return {modules_.data(), count_}; }
    // The module at an address, null when there is none.
    const LoadedModule* at(std::uintptr_t address) const noexcept;

  private:
    std::size_t takeLines(std::size_t used) noexcept;
    void take(std::string_view line) noexcept;
    void finishLast() noexcept;

    std::array<LoadedModule, 128> modules_{};
    std::size_t count_ = 0;
    // One more, which may turn out to be none.
    bool isUnfinished_ = false;
    bool hasCode_ = false;
    // Where its first part ends.
    std::uintptr_t headEnd_ = 0;
    std::array<char, 8192> buffer_{};
};

} // namespace NS
