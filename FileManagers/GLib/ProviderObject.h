#pragma once

#include "FileManagers/Shared/Drive.h"

#include <initializer_list>

#include <glib-object.h>

namespace FileManagers {

// The object that a file manager makes of a plug-in's type and asks for menus. It has a drive,
// which the main loop serves for as long as the object lives.

// What a plug-in's type does for its drive.
struct ProviderCallbacks {
    void (*onChange)(gpointer provider); // shown entries may be old
    void (*onNotDone)(const NotDone& notDone);
};

// An interface of a file manager, with the function that fills in what it asks for.
struct ProviderInterface {
    GType type;
    GInterfaceInitFunc init;
};

// Registers a type. The name has to be another one for each file manager. The callbacks outlive the
// process's last object.
GType registerProviderType(GTypeModule* module, const char* name,
                           const ProviderCallbacks* callbacks,
                           std::initializer_list<ProviderInterface> interfaces);

// The drive of an object of such a type.
Drive& driveOf(gpointer provider);

} // namespace FileManagers
