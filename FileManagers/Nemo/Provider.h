#pragma once

#include <glib-object.h>

namespace FileManagers {

// The object that Nemo asks for menus and location widgets. It asks from the thread that draws its
// windows.

// Registers the object's type, by the name "QuorvaneNemoProvider". Call once.
GType registerProvider(GTypeModule* module);

} // namespace FileManagers
