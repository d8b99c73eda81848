// The calls by which Caja and Nautilus ask their plug-ins, by the names that their own libraries
// have for them.

#include "FileManagers/Measuring/linux/PlugInCode.h"
#include "FileManagers/Measuring/linux/TimedCall.h"

#include <string>

#include <glib-object.h>

namespace {

using namespace FileManagers::Measuring;

bool isOurs(gpointer provider) {
    return g_str_has_prefix(G_OBJECT_TYPE_NAME(provider), "Quorvane") != FALSE;
}

std::string counts(GList* files, GList* items) {
    return std::to_string(g_list_length(files)) + " " + std::to_string(g_list_length(items));
}

// Of a menu's items, for as many files; name is the function's, what its name among the times.
template <class... Arguments>
GList* items(const char* name, const char* what, GList* files, gpointer provider,
             Arguments... arguments) {
    auto* const hook = next<GList*(gpointer, Arguments...)>(name);
    if (!isOurs(provider)) {
        return hook(provider, arguments...);
    }
    TimedCall call(what);
    GList* const items = hook(provider, arguments...);
    call.setResult(counts(files, items));
    return items;
}

// The file manager builds its menus anew, which is its work.
void rebuild(const char* name, gpointer provider) {
    auto* const tell = next<void(gpointer)>(name);
    const TimedCall call("rebuild");
    tell(provider);
}

} // namespace

extern "C" {

GList* caja_menu_provider_get_file_items(gpointer provider, gpointer window, GList* files) {
    return items(__func__, "items", files, provider, window, files);
}

GList* caja_menu_provider_get_background_items(gpointer provider, gpointer window,
                                               gpointer folder) {
    return items(__func__, "background", nullptr, provider, window, folder);
}

GList* caja_menu_provider_get_toolbar_items(gpointer provider, gpointer window, gpointer folder) {
    return items(__func__, "toolbar", nullptr, provider, window, folder);
}

gpointer caja_location_widget_provider_get_widget(gpointer provider, const char* uri,
                                                  gpointer window) {
    auto* const hook = next<gpointer(gpointer, const char*, gpointer)>(__func__);
    if (!isOurs(provider)) {
        return hook(provider, uri, window);
    }
    const TimedCall call("location");
    return hook(provider, uri, window);
}

GList* nautilus_menu_provider_get_file_items(gpointer provider, GList* files) {
    return items(__func__, "items", files, provider, files);
}

GList* nautilus_menu_provider_get_background_items(gpointer provider, gpointer folder) {
    return items(__func__, "background", nullptr, provider, folder);
}

void caja_menu_provider_emit_items_updated_signal(gpointer provider) {
    rebuild(__func__, provider);
}

void nautilus_menu_provider_emit_items_updated_signal(gpointer provider) {
    rebuild(__func__, provider);
}
}
