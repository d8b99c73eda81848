#pragma once

#include "FileManagers/GLib/Picks.h"

#include <gtk/gtk.h>

namespace FileManagers {

// The button in the toolbars of Caja's windows, seen while they show a folder of the drive and the
// extension is there, with a menu that is as new as each click.
//
// Caja asks for toolbars' items only when a window opens a folder, and has an action of GTK made of
// each. So there is a button for every folder, and it is hidden, by its action, where it has no
// place. Where toolbars are built otherwise, it is there for what opening the folder found.

// What Caja asks for when a window opens a folder; the list and its items are the caller's.
GList* newToolbarItems(Drive& drive, GtkWidget* window, SharedPlace place);

// Shows and hides the buttons of all windows by what the drive knows now.
void updateToolbars();

} // namespace FileManagers
