#include "FileManagers/GLib/Provider.h"

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
    const SharedPlace place = placeOfFiles(files, &nemo_file_info_get_uri, &nemo_file_info_get_name,
                                           &nemo_file_info_get_parent_location);
    return newMenuItems(driveOf(provider), MenuKind::kItems, place, &nemo_menu_item_new);
}

GList* backgroundItems(NemoMenuProvider* provider, GtkWidget*, NemoFileInfo* folder) {
    return newMenuItems(driveOf(provider), MenuKind::kContainer,
                        placeOfFolder(folder, &nemo_file_info_get_uri), &nemo_menu_item_new);
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
    return registerProviderType(module, "QuorvaneNemoProvider", &kCallbacks,
                                {
                                    {NEMO_TYPE_MENU_PROVIDER,            &initMenus    },
                                    {NEMO_TYPE_LOCATION_WIDGET_PROVIDER, &initLocations}
    });
}

} // namespace FileManagers
