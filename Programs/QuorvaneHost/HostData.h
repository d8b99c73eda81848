#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"

#include <string>

// The host's own folder for one drive, in the user's application support folder: where shared links
// and the Trash's records are. It is told apart from that of other drives by the drive's path, and
// made with all above it. Throws Refusal when that fails.
std::string hostDataFolderFor(const std::string& drivePath);

// Keeps other hosts out of such a folder for as long as the descriptor is open, however this
// process ends: two of them would write over each other's records. Throws Refusal when another host
// has it.
NS::FileDescriptor lockHostData(const std::string& folder);

// The 64-bit FNV-1a hash of some bytes as 16 hexadecimal digits: a short name that stays the same.
std::string shortNameFor(const std::string& bytes);
