#include "FileManagers/GLib/Provider.h"

#include "FileManagers/GLib/MenuItems.h"
#include "FileManagers/GLib/ProviderObject.h"
#include "FileManagers/Gtk/NotDoneDialog.h"
#include "FileManagers/Gtk3/ThemeIcon.h"
#include "FileManagers/Thunar/Interface.h"
#include "FileManagers/Thunar/Sidebar.h"
#include "FileManagers/Thunar/Views.h"

#include <string>
#include <vector>

namespace FileManagers {

namespace {

using Shell::MenuKind;

// The drive of all providers. Thunar lets go of a provider that has not been asked for a while, and
// makes another one; the first is kept, as its drive knows what windows show, and items that are
// still shown refer to it.
Drive& keptDrive(ThunarxMenuProvider* provider) {
    static ThunarxMenuProvider* kept = nullptr;
    if (kept == nullptr) {
        kept = THUNARX_MENU_PROVIDER(g_object_ref(provider));
        followViews(driveOf(kept));
    }
    return driveOf(kept);
}

// Thunar shows every item as one that can be picked.
GList* newItems(Drive& drive, MenuKind kind, const SharedPlace& place) {
    std::vector<Shell::MenuEntry> entries = drive.entries(kind, *place);
    std::erase_if(entries, [](const Shell::MenuEntry& entry) { return !entry.enabled; });
    return newMenuItems(drive, kind, entries, place, &thunarx_menu_item_new);
}

ThunarxMenuItem* newSubmenu(const Shell::ToolbarItem& shown, GList* items) {
    ThunarxMenuItem* const submenu =
        thunarx_menu_item_new("QuorvaneToolbar", withoutMnemonics(shown.name, '_').c_str(),
                              shown.toolTip.c_str(), themeIcon(shown));
    const OwnedObject<ThunarxMenu> menu(thunarx_menu_new());
    for (const GList* each = items; each != nullptr; each = each->next) {
        const OwnedObject<ThunarxMenuItem> item(static_cast<ThunarxMenuItem*>(each->data));
        thunarx_menu_append_item(menu.get(), item.get());
    }
    thunarx_menu_item_set_menu(submenu, menu.get());
    return submenu;
}

GList* fileItems(ThunarxMenuProvider* provider, GtkWidget* window, GList* files) {
    return newItems(keptDrive(provider),
                    isMenuOfSidebar(window) ? MenuKind::kSidebar : MenuKind::kItems,
                    placeOfFiles(files, &thunarx_file_info_get_uri));
}

GList* backgroundItems(ThunarxMenuProvider* provider, GtkWidget*, ThunarxFileInfo* folder) {
    Drive& drive = keptDrive(provider);
    const SharedPlace place = placeOfFolder(folder, &thunarx_file_info_get_uri);
    GList* const items = newItems(drive, MenuKind::kContainer, place);
    GList* const toolbarItems = newItems(drive, MenuKind::kToolbar, place);
    if (toolbarItems == nullptr) {
        return items;
    }
    ThunarxMenuItem* const submenu = newSubmenu(drive.toolbarItem(), toolbarItems);
    g_list_free(toolbarItems);
    return g_list_append(items, submenu);
}

void initMenus(gpointer interface, gpointer) {
    auto& menus = *static_cast<ThunarxMenuProviderIface*>(interface);
    menus.get_file_menu_items = &fileItems;
    menus.get_folder_menu_items = &backgroundItems;
}

// Thunar builds its menus as they open.
void changed(gpointer) {}

constexpr ProviderCallbacks kCallbacks{&changed, &showNotDone};

} // namespace

GType registerProvider(GTypeModule* module) {
    return registerProviderType(module, "QuorvaneThunarProvider", &kCallbacks,
                                {
                                    {THUNARX_TYPE_MENU_PROVIDER, &initMenus}
    });
}

} // namespace FileManagers
