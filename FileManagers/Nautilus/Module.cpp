// What Nautilus calls when it loads the plug-in.

#include "FileManagers/Nautilus/Provider.h"

#include <gmodule.h>

namespace {

GType provider = 0;

} // namespace

extern "C" {

G_MODULE_EXPORT void nautilus_module_initialize(GTypeModule* module) {
    provider = FileManagers::registerProvider(module);
}

G_MODULE_EXPORT void nautilus_module_shutdown() {}

G_MODULE_EXPORT void nautilus_module_list_types(const GType** types, int* count) {
    *types = &provider;
    *count = 1;
}
}
