#pragma once

#include "FileManagers/Shared/Drive.h"

namespace FileManagers {

// Tells a drive which folders can be seen in the application's windows, those that are there and
// those that come: of a window's tabs the one that is shown, of a split window both halves. For
// good: the drive outlives the main loop. Call once.
//
// This leans on the name that views have inside of Thunar, and on a property of theirs. Where there
// are none, nothing is told.
void followViews(Drive& drive);

} // namespace FileManagers
