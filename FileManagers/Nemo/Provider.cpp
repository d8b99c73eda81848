#include "FileManagers/Nemo/Provider.h"

#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/MenuItems.h"
#include "FileManagers/GLib/ProviderObject.h"
#include "FileManagers/Gtk/NotDoneDialog.h"
#include "FileManagers/Nemo/Strip.h"

#include <libnemo-extension/nemo-location-widget-provider.h>
#include <libnemo-extension/nemo-menu-provider.h>

#include <string>

namespace FileManagers {

namespace {

using Shell::MenuKind;

GList* fileItems(NemoMenuProvider* provider, GtkWidget*, GList* files) {
    Drive& drive = driveOf(provider);
    const SharedPlace place = placeOfFiles(files, &nemo_file_info_get_uri, &nemo_file_info_get_name,
                                           &nemo_file_info_get_parent_location);
    return newMenuItems(drive, MenuKind::kItems, drive.entries(MenuKind::kItems, *place), place,
                        &nemo_menu_item_new);
}

GList* backgroundItems(NemoMenuProvider* provider, GtkWidget*, NemoFileInfo* folder) {
    Drive& drive = driveOf(provider);
    const SharedPlace place = placeOfFolder(folder, &nemo_file_info_get_uri);
    return newMenuItems(drive, MenuKind::kContainer, drive.entries(MenuKind::kContainer, *place),
                        place, &nemo_menu_item_new);
}

void initMenus(gpointer interface, gpointer) {
    auto& menus = *static_cast<NemoMenuProviderIface*>(interface);
    menus.get_file_items = &fileItems;
    menus.get_background_items = &backgroundItems;
}

GtkWidget* locationWidget(NemoLocationWidgetProvider* provider, const char* uri, GtkWidget*) {
    const std::string folder = localPath(uri);
    return folder.empty() ? nullptr : newStrip(driveOf(provider), folder);
}

void initLocations(gpointer interface, gpointer) {
    static_cast<NemoLocationWidgetProviderIface*>(interface)->get_widget = &locationWidget;
}

void changed(gpointer provider) {
    updateStrips();
    nemo_menu_provider_emit_items_updated_signal(static_cast<NemoMenuProvider*>(provider));
}

constexpr ProviderCallbacks kCallbacks{&changed, &showNotDone};

} // namespace

GType registerProvider(GTypeModule* module) {
    const GType type = registerProviderType(module, "QuorvaneNemoProvider", &kCallbacks);
    const GInterfaceInfo menus{&initMenus, nullptr, nullptr};
    const GInterfaceInfo locations{&initLocations, nullptr, nullptr};
    g_type_module_add_interface(module, type, NEMO_TYPE_MENU_PROVIDER, &menus);
    g_type_module_add_interface(module, type, NEMO_TYPE_LOCATION_WIDGET_PROVIDER, &locations);
    return type;
}

} // namespace FileManagers
