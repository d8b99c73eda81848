#pragma once

#include <cstdint>
#include <elf.h>
#include <filesystem>
#include <link.h>
#include <string>
#include <sys/auxv.h>

namespace Tests {

// The program of the test: where its file is, and where it lies in memory.

inline std::string ownProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

// What an address in memory is more than the one that the file was linked for.
inline std::uint64_t ownBias() {
    const auto* const headers = reinterpret_cast<const ElfW(Phdr)*>(::getauxval(AT_PHDR));
    const std::uint64_t count = ::getauxval(AT_PHNUM);
    for (std::uint64_t i = 0; i < count; ++i) {
        if (headers[i].p_type == PT_PHDR) {
            return reinterpret_cast<std::uint64_t>(headers) - headers[i].p_vaddr;
        }
    }
    return 0; // a program that can lie in one place only
}

// Where a function of the program stands in its file.
template <class Function>
std::uint64_t addressInOwnProgram(Function* function) {
    return reinterpret_cast<std::uint64_t>(function) - ownBias();
}

} // namespace Tests
