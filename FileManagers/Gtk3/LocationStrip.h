#pragma once

#include <gtk/gtk.h>

namespace FileManagers {

// Has the strip above the files that a widget is put into shown for just as long as something in it
// is: the widget's own visibility decides where it is alone. File managers show the strip as soon
// as there is a widget. This leans on how strips are built, a box in frames; where they are built
// otherwise an empty one stays.
void followVisibility(GtkWidget* widget);

} // namespace FileManagers
