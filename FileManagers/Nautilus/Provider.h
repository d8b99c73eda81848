#pragma once

#include <glib-object.h>

namespace FileManagers {

// The object that Nautilus asks for menus, from the thread that draws its windows.

// Registers the object's type, by the name "QuorvaneNautilusProvider". Call once.
GType registerProvider(GTypeModule* module);

} // namespace FileManagers
