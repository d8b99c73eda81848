#pragma once

#include <gtk/gtk.h>

namespace FileManagers {

// Whether the menu that is being built in one of Thunar's windows is that of a place in its
// sidebar. The interface does not tell it from that of a selected folder; this goes by the widget
// that the user clicked, or that has the keyboard, and by the name that sidebars have inside
// Thunar. Where they have another one nothing is taken for a sidebar.
bool isMenuOfSidebar(GtkWidget* window);

} // namespace FileManagers
