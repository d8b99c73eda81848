#pragma once

#include "FileManagers/Shared/Drive.h"

#include <string>

#include <gtk/gtk.h>

namespace FileManagers {

// The strip above the files of a folder, with a button for the toolbar's menu: it can be seen while
// the folder is on the drive, and its extension there. Until it is destroyed the extension hears
// that the folder is shown. A floating reference; the drive outlives it.
GtkWidget* newStrip(Drive& drive, const std::string& folder);

// Looks again which of all strips can be seen, and what they say.
void updateStrips();

} // namespace FileManagers
