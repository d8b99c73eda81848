#pragma once

#include <string>

// What a file's URL needs to know of the file system. Paths are bytes.
namespace NS::CurrentFolder {

// The absolute path of the process's current folder without a slash at its end; "" when it is the
// root or is gone.
std::string path();

// True when the path leads to a folder, through symbolic links as well.
bool isFolder(const std::string& path) noexcept;

} // namespace NS::CurrentFolder
