#pragma once

#include "Platform/Foundation/FileFolder.h"

#include <memory>

namespace NS {

// A folder of the file system; null when it cannot be read.
std::unique_ptr<FileFolder> openSystemFolder(const String& path);

} // namespace NS
