#pragma once

#include "FileManagers/Shared/Drive.h"

#include <memory>

#include <glib-object.h>

namespace FileManagers {

// A place that the items of one menu share: a selection can hold megabytes.
using SharedPlace = std::shared_ptr<const Shell::Place>;

// Has the drive carry out an entry when an item, of whatever menu library, emits "activate". The
// drive outlives the item; what is remembered for it goes with it.
void pickOnActivate(gpointer item, Drive& drive, Shell::MenuKind kind,
                    const Shell::MenuEntry& entry, SharedPlace place);

} // namespace FileManagers
