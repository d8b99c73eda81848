#pragma once

#include <string>

namespace Shell {

// True when an absolute path leads to a folder without a symbolic link on the way or at its end:
// one look of the system's, however long the path is. False also when the system cannot tell.
bool isFolderFreeOfLinks(const std::string& path) noexcept;

} // namespace Shell
