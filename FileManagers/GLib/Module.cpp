// What file managers of one family call when they load a plug-in: the same three functions, which
// begin with MODULE_PREFIX, the name of the file manager. Compiled for each plug-in.

#include "FileManagers/GLib/Provider.h"

#include <gmodule.h>

#define JOINED(prefix, name) prefix##name
#define NAMED(prefix, name) JOINED(prefix, name)
#define ENTRY_POINT(name) G_MODULE_EXPORT void NAMED(MODULE_PREFIX, name)

namespace {

GType provider = 0;

} // namespace

extern "C" {

ENTRY_POINT(_module_initialize)(GTypeModule* module) {
    provider = FileManagers::registerProvider(module);
}

ENTRY_POINT(_module_shutdown)() {}

ENTRY_POINT(_module_list_types)(const GType** types, int* count) {
    *types = &provider;
    *count = 1;
}
}
