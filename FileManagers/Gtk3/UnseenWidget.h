#pragma once

#include <gtk/gtk.h>

namespace FileManagers {

// A widget for a file manager's location strip that nobody sees, and that lives for as long as its
// window shows the folder; a floating reference. The strip, which is shown as soon as a widget is
// put into it, is hidden again where nothing else is in it: that leans on how strips are built, and
// where they are built otherwise an empty one stays.
GtkWidget* newUnseenWidget();

} // namespace FileManagers
