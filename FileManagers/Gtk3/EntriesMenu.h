#pragma once

#include "FileManagers/GLib/Picks.h"

#include <vector>

#include <gtk/gtk.h>

namespace FileManagers {

// A menu of entries for a place, with its items shown; a floating reference, as of every new
// widget. The drive outlives it.
GtkMenu* newEntriesMenu(Drive& drive, Shell::MenuKind kind,
                        const std::vector<Shell::MenuEntry>& entries, const SharedPlace& place);

// Pops a menu up where the user has just clicked in a window, and destroys it when it closes.
void popUpOnce(GtkMenu* menu, GtkWidget* window);

} // namespace FileManagers
