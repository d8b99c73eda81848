#pragma once

#include <glib-object.h>

namespace FileManagers {

// The object that Thunar asks for menus. It asks from the thread that draws its windows, and once
// for each window before it is shown.

// Registers the object's type, by the name "QuorvaneThunarProvider". Call once.
GType registerProvider(GTypeModule* module);

} // namespace FileManagers
