#include "FileManagers/GLib/Provider.h"

#include "FileManagers/Caja/Toolbar.h"
#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/MenuItems.h"
#include "FileManagers/GLib/ProviderObject.h"
#include "FileManagers/Gtk/NotDoneDialog.h"
#include "FileManagers/Gtk3/LocationStrip.h"

#include <libcaja-extension/caja-location-widget-provider.h>
#include <libcaja-extension/caja-menu-provider.h>

#include <string>

namespace FileManagers {

namespace {

using Shell::MenuKind;

// Menus

GList* fileItems(CajaMenuProvider* provider, GtkWidget*, GList* files) {
    const SharedPlace place = placeOfFiles(files, &caja_file_info_get_uri, &caja_file_info_get_name,
                                           &caja_file_info_get_parent_location);
    return newMenuItems(driveOf(provider), MenuKind::kItems, place, &caja_menu_item_new);
}

GList* backgroundItems(CajaMenuProvider* provider, GtkWidget*, CajaFileInfo* folder) {
    return newMenuItems(driveOf(provider), MenuKind::kContainer,
                        placeOfFolder(folder, &caja_file_info_get_uri), &caja_menu_item_new);
}

GList* toolbarItems(CajaMenuProvider* provider, GtkWidget* window, CajaFileInfo* folder) {
    return newToolbarItems(driveOf(provider), window,
                           placeOfFolder(folder, &caja_file_info_get_uri));
}

void initMenus(gpointer interface, gpointer) {
    auto& menus = *static_cast<CajaMenuProviderIface*>(interface);
    menus.get_file_items = &fileItems;
    menus.get_background_items = &backgroundItems;
    menus.get_toolbar_items = &toolbarItems;
}

// Shown folders

void locationLeft(GtkWidget* widget, gpointer provider) {
    driveOf(provider).close(widget);
}

// A widget that nobody sees: it lives for as long as its window shows the folder.
GtkWidget* locationWidget(CajaLocationWidgetProvider* provider, const char* uri, GtkWidget*) {
    const std::string folder = localPath(uri);
    if (folder.empty()) {
        return nullptr;
    }
    GtkWidget* const widget = gtk_event_box_new();
    gtk_widget_set_no_show_all(widget, TRUE);
    followVisibility(widget);
    g_signal_connect(widget, "destroy", G_CALLBACK(&locationLeft), provider);
    driveOf(provider).show(widget, {folder});
    return widget;
}

void initLocations(gpointer interface, gpointer) {
    static_cast<CajaLocationWidgetProviderIface*>(interface)->get_widget = &locationWidget;
}

void itemsChanged(gpointer provider) {
    updateToolbars();
    caja_menu_provider_emit_items_updated_signal(static_cast<CajaMenuProvider*>(provider));
}

constexpr ProviderCallbacks kCallbacks{&itemsChanged, &showNotDone};

} // namespace

GType registerProvider(GTypeModule* module) {
    return registerProviderType(module, "QuorvaneCajaProvider", &kCallbacks,
                                {
                                    {CAJA_TYPE_MENU_PROVIDER,            &initMenus    },
                                    {CAJA_TYPE_LOCATION_WIDGET_PROVIDER, &initLocations}
    });
}

} // namespace FileManagers
