#pragma once

#include "FileManagers/Shared/NotDone.h"

namespace FileManagers {

// Tells the user, in a dialog of the application's active window that waits for nobody. While it is
// there, what is told next takes its place.
void showNotDone(const NotDone& notDone);

} // namespace FileManagers
