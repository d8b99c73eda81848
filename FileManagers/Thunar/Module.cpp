// What Thunar calls when it loads the plug-in.

#include "FileManagers/GLib/Provider.h"
#include "FileManagers/Thunar/Interface.h"

#include <gmodule.h>

namespace {

GType provider = 0;

} // namespace

extern "C" {

G_MODULE_EXPORT void thunar_extension_initialize(ThunarxProviderPlugin* plugin) {
    // What it has in Thunar's windows does not go with the last menu.
    thunarx_provider_plugin_set_resident(plugin, TRUE);
    provider = FileManagers::registerProvider(G_TYPE_MODULE(plugin));
}

G_MODULE_EXPORT void thunar_extension_shutdown() {}

G_MODULE_EXPORT void thunar_extension_list_types(const GType** types, int* count) {
    *types = &provider;
    *count = 1;
}
}
