#include "FileManagers/Caja/Toolbar.h"

#include "FileManagers/GLib/Owned.h"
#include "FileManagers/Gtk3/EntriesMenu.h"
#include "FileManagers/Gtk3/ThemeIcon.h"

#include <libcaja-extension/caja-menu-item.h>

#include <string>
#include <utility>

namespace FileManagers {

namespace {

using Shell::MenuKind;

constexpr const char* kItem = "QuorvaneToolbar";  // and so its action
constexpr const char* kKey = "quorvane-toolbar";  // for a window's
constexpr const char* kAction = "related-action"; // of what stands for one in a toolbar

// What the toolbar of a window has.
struct Toolbar {
    Drive& drive;
    SharedPlace place;
    OwnedObject<GObject> action; // null until the button is there
};

OwnedObject<GObject> actionOf(GtkWidget* widget) {
    GObject* action = nullptr;
    if (GTK_IS_TOOL_ITEM(widget) &&
        g_object_class_find_property(G_OBJECT_GET_CLASS(widget), kAction) != nullptr) {
        g_object_get(widget, kAction, &action, nullptr);
    }
    return OwnedObject<GObject>(action);
}

std::string nameOf(GObject* action) {
    char* name = nullptr;
    g_object_get(action, "name", &name, nullptr);
    const OwnedText owned(name);
    return owned ? owned.get() : "";
}

void update(const Toolbar& toolbar) {
    const bool isOnDrive = toolbar.drive.isOnDrive(toolbar.place->target);
    if (isOnDrive) {
        const Shell::ToolbarItem& shown = toolbar.drive.toolbarItem();
        g_object_set(toolbar.action.get(), "label", withoutMnemonics(shown.name, '_').c_str(),
                     "tooltip", shown.toolTip.c_str(), "icon-name", themeIcon(shown), nullptr);
    }
    g_object_set(toolbar.action.get(), "visible", isOnDrive ? TRUE : FALSE, nullptr);
}

Toolbar* toolbarOf(gpointer window) {
    return static_cast<Toolbar*>(g_object_get_data(G_OBJECT(window), kKey));
}

// Before the button is drawn for the first time.
gboolean mapped(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
    auto* const widget = static_cast<GtkWidget*>(g_value_get_object(values));
    OwnedObject<GObject> action = actionOf(widget);
    Toolbar* const toolbar = action && nameOf(action.get()) == kItem
                                 ? toolbarOf(gtk_widget_get_toplevel(widget))
                                 : nullptr;
    if (toolbar != nullptr && toolbar->action != action) {
        toolbar->action = std::move(action);
        update(*toolbar);
    }
    return TRUE; // for the next one as well
}

void lookForAction(GtkWidget* widget, gpointer found) {
    if (actionOf(widget)) {
        *static_cast<bool*>(found) = true;
    } else if (GTK_IS_CONTAINER(widget)) {
        gtk_container_forall(GTK_CONTAINER(widget), &lookForAction, found);
    }
}

// Whether this window's buttons stand for actions, by which they can be hidden.
bool canHide(GtkWidget* window) {
    static const bool can = [window] {
        bool found = false;
        lookForAction(window, &found);
        if (found) {
            (void)g_signal_add_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), 0, &mapped,
                                             nullptr, nullptr);
        }
        return found;
    }();
    return can;
}

struct Click {
    Drive& drive;
    GtkWidget* window; // which its toolbar does not outlive
    SharedPlace place;
};

// A button cannot have a menu of Caja's own, and an own one is as new as the click.
void clicked(CajaMenuItem*, gpointer data) {
    const auto& click = *static_cast<const Click*>(data);
    const auto entries = click.drive.clickedEntries(MenuKind::kToolbar, *click.place);
    if (!entries.empty()) {
        popUpOnce(newEntriesMenu(click.drive, MenuKind::kToolbar, entries, click.place),
                  click.window);
    }
}

CajaMenuItem* newItem(Drive& drive, GtkWidget* window, SharedPlace place) {
    const Shell::ToolbarItem& shown = drive.toolbarItem();
    CajaMenuItem* const item =
        caja_menu_item_new(kItem, withoutMnemonics(shown.name, '_').c_str(), shown.toolTip.c_str(),
                           shown.imageName.empty() ? nullptr : themeIcon(shown));
    g_signal_connect_data(
        item, "activate", G_CALLBACK(&clicked), new Click{drive, window, std::move(place)},
        [](gpointer data, GClosure*) { delete static_cast<Click*>(data); }, GConnectFlags{});
    return item;
}

} // namespace

GList* newToolbarItems(Drive& drive, GtkWidget* window, SharedPlace place) {
    const bool isEverywhere = canHide(window);
    if (place->target.empty() || (!isEverywhere && !drive.isOnDrive(place->target))) {
        return nullptr;
    }
    g_object_set_data_full(G_OBJECT(window), kKey, new Toolbar{drive, place, nullptr},
                           [](gpointer data) { delete static_cast<Toolbar*>(data); });
    return g_list_append(nullptr, newItem(drive, window, std::move(place)));
}

void updateToolbars() {
    GList* const windows = gtk_window_list_toplevels();
    for (const GList* each = windows; each != nullptr; each = each->next) {
        const Toolbar* const toolbar = toolbarOf(each->data);
        if (toolbar != nullptr && toolbar->action) {
            update(*toolbar);
        }
    }
    g_list_free(windows);
}

} // namespace FileManagers
