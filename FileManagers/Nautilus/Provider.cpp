#include "FileManagers/GLib/Provider.h"

#include "FileManagers/GLib/MenuItems.h"
#include "FileManagers/GLib/ProviderObject.h"
#include "FileManagers/Gtk/NotDoneDialog.h"
#include "FileManagers/Nautilus/Extension.h"
#include "FileManagers/Nautilus/OpenWindows.h"

#include <string>

namespace FileManagers {

namespace {

using Shell::MenuKind;

GList* itemsFor(Drive& drive, MenuKind kind, const SharedPlace& place) {
    return newMenuItems(drive, kind, place, &nautilus_menu_item_new);
}

// It is asked for at each change of the selection, also to none.
GList* fileItems(NautilusMenuProvider* provider, GList* files) {
    if (files == nullptr) {
        return nullptr;
    }
    return itemsFor(driveOf(provider), MenuKind::kItems,
                    placeOfFiles(files, &nautilus_file_info_get_uri, &nautilus_file_info_get_name,
                                 &nautilus_file_info_get_parent_location));
}

// The toolbar's menu in the background's, as no toolbar has a place for it. None without entries.
GList* withToolbarMenu(GList* items, Drive& drive, const SharedPlace& place) {
    GList* const entries = itemsFor(drive, MenuKind::kToolbar, place);
    if (entries == nullptr) {
        return items;
    }
    const OwnedObject<NautilusMenu> menu(nautilus_menu_new());
    for (const GList* each = entries; each != nullptr; each = each->next) {
        nautilus_menu_append_item(menu.get(), NAUTILUS_MENU_ITEM(each->data));
    }
    nautilus_menu_item_list_free(entries);
    const Shell::ToolbarItem& shown = drive.toolbarItem();
    NautilusMenuItem* const item =
        nautilus_menu_item_new("QuorvaneToolbar", withoutMnemonics(shown.name, '_').c_str(),
                               shown.toolTip.c_str(), shown.imageName.c_str());
    nautilus_menu_item_set_submenu(item, menu.get());
    return g_list_append(items, item);
}

GList* backgroundItems(NautilusMenuProvider* provider, NautilusFileInfo* folder) {
    Drive& drive = driveOf(provider);
    followOpenWindows(G_OBJECT(provider), drive); // a window that shows something is there now
    const SharedPlace place = placeOfFolder(folder, &nautilus_file_info_get_uri);
    return withToolbarMenu(itemsFor(drive, MenuKind::kContainer, place), drive, place);
}

void initMenus(gpointer interface, gpointer) {
    auto& menus = *static_cast<NautilusMenuProviderInterface*>(interface);
    menus.get_file_items = &fileItems;
    menus.get_background_items = &backgroundItems;
}

void itemsChanged(gpointer provider) {
    nautilus_menu_provider_emit_items_updated_signal(static_cast<NautilusMenuProvider*>(provider));
}

constexpr ProviderCallbacks kCallbacks{&itemsChanged, &showNotDone};

} // namespace

GType registerProvider(GTypeModule* module) {
    return registerProviderType(module, "QuorvaneNautilusProvider", &kCallbacks,
                                {
                                    {NAUTILUS_TYPE_MENU_PROVIDER, &initMenus}
    });
}

} // namespace FileManagers
