#include "FileManagers/Caja/Provider.h"

#include "FileManagers/GLib/DriveLoop.h"
#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/Owned.h"
#include "FileManagers/GLib/Picks.h"
#include "FileManagers/Gtk3/EntriesMenu.h"
#include "FileManagers/Gtk3/NotDoneDialog.h"
#include "FileManagers/Gtk3/ThemeIcon.h"
#include "FileManagers/Gtk3/UnseenWidget.h"

#include <libcaja-extension/caja-location-widget-provider.h>
#include <libcaja-extension/caja-menu-provider.h>

#include <memory>
#include <new>
#include <string>
#include <utility>

namespace FileManagers {

namespace {

using Shell::MenuKind;
using Shell::Place;

// What an object of the type holds beside its parent's part.
struct Provider {
    GObject parent;
    Drive drive;
    DriveLoop loop;
};

Drive& driveOf(gpointer provider) {
    return static_cast<Provider*>(provider)->drive;
}

// Menus

std::string pathOf(CajaFileInfo* file) {
    return localPath(OwnedText(caja_file_info_get_uri(file)).get());
}

std::string folderOf(CajaFileInfo* file) {
    return localPath(OwnedText(caja_file_info_get_parent_uri(file)).get());
}

// Of files some of which are not of this machine there is no menu.
SharedPlace placeOf(GList* files) {
    Place place;
    for (const GList* each = files; each != nullptr; each = each->next) {
        auto* const file = static_cast<CajaFileInfo*>(each->data);
        place.items.push_back(pathOf(file));
        if (place.target.empty()) {
            place.target = folderOf(file);
        }
    }
    return std::make_shared<const Place>(std::move(place));
}

CajaMenuItem* newItem(const std::string& name, const Shell::MenuEntry& entry) {
    CajaMenuItem* const item =
        caja_menu_item_new(name.c_str(), withoutMnemonics(entry.title, '_').c_str(), "", nullptr);
    g_object_set(item, "sensitive", entry.enabled ? TRUE : FALSE, nullptr);
    return item;
}

GList* newItems(Drive& drive, MenuKind kind, const SharedPlace& place) {
    GList* items = nullptr;
    const std::string prefix = "Quorvane" + std::to_string(static_cast<int>(kind)) + "::";
    for (const Shell::MenuEntry& entry : drive.entries(kind, *place)) {
        CajaMenuItem* const item = newItem(prefix + std::to_string(g_list_length(items)), entry);
        pickOnActivate(item, drive, kind, entry, place);
        items = g_list_append(items, item);
    }
    return items;
}

GList* fileItems(CajaMenuProvider* provider, GtkWidget*, GList* files) {
    return newItems(driveOf(provider), MenuKind::kItems, placeOf(files));
}

GList* backgroundItems(CajaMenuProvider* provider, GtkWidget*, CajaFileInfo* folder) {
    return newItems(driveOf(provider), MenuKind::kContainer,
                    std::make_shared<const Place>(Place{{}, pathOf(folder)}));
}

// The toolbar

struct ToolbarClick {
    Drive& drive;
    GtkWidget* window; // which its toolbar does not outlive
    SharedPlace place;
};

// A button cannot have a menu of Caja's own, and an own one is as new as the click.
void toolbarClicked(CajaMenuItem*, gpointer data) {
    const auto& click = *static_cast<const ToolbarClick*>(data);
    const auto entries = click.drive.clickedEntries(MenuKind::kToolbar, *click.place);
    if (!entries.empty()) {
        popUpOnce(newEntriesMenu(click.drive, MenuKind::kToolbar, entries, click.place),
                  click.window);
    }
}

void forgetClick(gpointer data, GClosure*) {
    delete static_cast<ToolbarClick*>(data);
}

GList* toolbarItems(CajaMenuProvider* provider, GtkWidget* window, CajaFileInfo* folder) {
    Drive& drive = driveOf(provider);
    auto place = std::make_shared<const Place>(Place{{}, pathOf(folder)});
    if (!drive.isOnDrive(place->target)) {
        return nullptr;
    }
    const Shell::ToolbarItem& shown = drive.toolbarItem();
    CajaMenuItem* const item =
        caja_menu_item_new("QuorvaneToolbar", withoutMnemonics(shown.name, '_').c_str(),
                           shown.toolTip.c_str(), themeIcon(shown));
    g_signal_connect_data(item, "activate", G_CALLBACK(&toolbarClicked),
                          new ToolbarClick{drive, window, std::move(place)}, &forgetClick,
                          GConnectFlags{});
    return g_list_append(nullptr, item);
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

GtkWidget* locationWidget(CajaLocationWidgetProvider* provider, const char* uri, GtkWidget*) {
    const std::string folder = localPath(uri);
    if (folder.empty()) {
        return nullptr;
    }
    GtkWidget* const widget = newUnseenWidget();
    g_signal_connect(widget, "destroy", G_CALLBACK(&locationLeft), provider);
    driveOf(provider).show(widget, {folder});
    return widget;
}

void initLocations(gpointer interface, gpointer) {
    static_cast<CajaLocationWidgetProviderIface*>(interface)->get_widget = &locationWidget;
}

// The type

void construct(GTypeInstance* instance, gpointer) {
    auto* const provider = reinterpret_cast<Provider*>(instance);
    Drive& drive = *new (&provider->drive) Drive;
    new (&provider->loop) DriveLoop(drive);
    drive.setOnNotDone(&showNotDone);
    drive.setOnChange(
        [provider] { caja_menu_provider_emit_items_updated_signal(CAJA_MENU_PROVIDER(provider)); });
}

void finalize(GObject* object) {
    auto* const provider = reinterpret_cast<Provider*>(object);
    provider->loop.~DriveLoop();
    provider->drive.~Drive();
    G_OBJECT_CLASS(g_type_class_peek(G_TYPE_OBJECT))->finalize(object);
}

void initClass(gpointer type, gpointer) {
    static_cast<GObjectClass*>(type)->finalize = &finalize;
}

} // namespace

GType registerProvider(GTypeModule* module) {
    GTypeInfo info{};
    info.class_size = sizeof(GObjectClass);
    info.class_init = &initClass;
    info.instance_size = sizeof(Provider);
    info.instance_init = &construct;
    const GType type = g_type_module_register_type(module, G_TYPE_OBJECT, "QuorvaneCajaProvider",
                                                   &info, GTypeFlags{});
    const GInterfaceInfo menus{&initMenus, nullptr, nullptr};
    const GInterfaceInfo locations{&initLocations, nullptr, nullptr};
    g_type_module_add_interface(module, type, CAJA_TYPE_MENU_PROVIDER, &menus);
    g_type_module_add_interface(module, type, CAJA_TYPE_LOCATION_WIDGET_PROVIDER, &locations);
    return type;
}

} // namespace FileManagers
