#pragma once

#include "FileManagers/Shared/Drive.h"

namespace FileManagers {

// Tells a drive which folders the application's windows show, those that are there and those that
// come; of a window's tabs, the one that is seen. For good: the drive outlives the main loop.
//
// This leans on a property inside of Thunar. Of windows that have it not, nothing is told.
void followWindows(Drive& drive);

} // namespace FileManagers
