#pragma once

#include <glib-object.h>

namespace FileManagers {

// Registers the type of the object that a file manager asks for menus, from the thread that draws
// its windows. Each plug-in defines it; called once, when it is loaded.
GType registerProvider(GTypeModule* module);

} // namespace FileManagers
