#pragma once

#include <cstddef>

// The entries of the run-time folder that are to go with this process.
namespace NS::ExitCleanup {

// Notes a name and its socket; the folder stays open until they are removed again. What finds no
// slot is left for the next registration of any process to tidy up.
std::size_t add(int folder, const char* name, const char* socketName);
void remove(std::size_t slot) noexcept;

} // namespace NS::ExitCleanup
