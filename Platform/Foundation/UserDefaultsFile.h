#pragma once

#include "Platform/Foundation/Data.h"

// Where the user's settings for this program stand in the file system.
namespace NS::UserDefaultsFile {

// The file's contents; nil when there is no file, or none that could be ours.
RefPtr<Data> read();

// Replaces the file in one step, for this user alone to read, and makes the folder where it is
// missing. False, with the earlier file in place, when the system refuses.
bool replace(Bytes contents);

} // namespace NS::UserDefaultsFile
