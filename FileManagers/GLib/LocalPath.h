#pragma once

#include <string>

namespace FileManagers {

// The absolute path of a file URI in the bytes of the file system; empty for places that are not
// files of this machine, and for no URI.
std::string localPath(const char* uri);

} // namespace FileManagers
