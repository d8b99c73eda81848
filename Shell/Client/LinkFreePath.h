#pragma once

#include <string>

namespace Shell {

// True when an absolute path leads somewhere without a symbolic link on the way or at its end: one
// look of the system's, however long the path is. False also when the system cannot tell.
bool isFreeOfLinks(const std::string& path) noexcept;

// True when an absolute path leads somewhere, maybe by links on the way, and there is none at its
// end: this takes the system less to tell.
bool isNoLink(const std::string& path) noexcept;

} // namespace Shell
