#include "FileManagers/Gtk3/EntriesMenu.h"

namespace FileManagers {

GtkMenu* newEntriesMenu(Drive& drive, Shell::MenuKind kind,
                        const std::vector<Shell::MenuEntry>& entries, const SharedPlace& place) {
    GtkWidget* const menu = gtk_menu_new();
    for (const Shell::MenuEntry& entry : entries) {
        GtkWidget* const item = gtk_menu_item_new_with_label(entry.title.c_str());
        gtk_widget_set_sensitive(item, entry.enabled ? TRUE : FALSE);
        pickOnActivate(item, drive, kind, entry, place);
        gtk_menu_shell_append(GTK_MENU_SHELL(menu), item);
    }
    gtk_widget_show_all(menu);
    return GTK_MENU(menu);
}

namespace {

gboolean destroy(gpointer menu) {
    gtk_widget_destroy(GTK_WIDGET(menu));
    return G_SOURCE_REMOVE;
}

// Later: what was picked is told after the menu has closed.
void destroyLater(GtkWidget* menu, gpointer) {
    (void)g_idle_add_full(G_PRIORITY_DEFAULT_IDLE, &destroy, g_object_ref(menu), &g_object_unref);
}

} // namespace

void popUpOnce(GtkMenu* menu, GtkWidget* window) {
    gtk_menu_attach_to_widget(menu, window, nullptr);
    g_signal_connect(menu, "deactivate", G_CALLBACK(&destroyLater), nullptr);
    GdkEvent* const click = gtk_get_current_event();
    if (click != nullptr) {
        gtk_menu_popup_at_pointer(menu, click);
        gdk_event_free(click);
    } else { // by the keyboard's way or an assistive technology's
        gtk_menu_popup_at_widget(menu, window, GDK_GRAVITY_CENTER, GDK_GRAVITY_NORTH, nullptr);
    }
}

} // namespace FileManagers
