#pragma once

#include <glib-object.h>

namespace FileManagers {

// The object that Caja asks for menus, toolbar items and location widgets. It asks from the thread
// that draws its windows.

// Registers the object's type, by the name "QuorvaneCajaProvider". Call once.
GType registerProvider(GTypeModule* module);

} // namespace FileManagers
