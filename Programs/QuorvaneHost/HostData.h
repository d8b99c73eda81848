#pragma once

#include <string>

// The host's own folder for one drive, in the user's application support folder: where shared links
// and the Trash's records are. It is told apart from that of other drives by the drive's path, and
// made with all above it. Throws Refusal when that fails.
std::string hostDataFolderFor(const std::string& drivePath);

// The 64-bit FNV-1a hash of some bytes as 16 hexadecimal digits: a short name that stays the same.
std::string shortNameFor(const std::string& bytes);
