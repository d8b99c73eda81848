#pragma once

#include "Platform/Ports/linux/NameFile.h"

#include <cstddef>
#include <string>

// The entries of the run-time folder that are to go with this process. What finds no room here is
// left for the next registration of any process to tidy up.
namespace NS::ExitCleanup {

inline constexpr std::size_t kSlots = 64;

// Notes a name and its socket, and returns the slot. The name's file stays open until the slot is
// given up again.
std::size_t add(const NameFile& file, const std::string& socketName);
void remove(std::size_t slot) noexcept;

} // namespace NS::ExitCleanup
