#include "FileManagers/Gtk3/UnseenWidget.h"

namespace FileManagers {

namespace {

bool hasVisibleChild(GtkWidget* container) {
    GList* const children = gtk_container_get_children(GTK_CONTAINER(container));
    bool isVisible = false;
    for (const GList* each = children; each != nullptr; each = each->next) {
        isVisible = isVisible || gtk_widget_get_visible(GTK_WIDGET(each->data)) != FALSE;
    }
    g_list_free(children);
    return isVisible;
}

// With the frames around it.
GtkWidget* stripAround(GtkWidget* box) {
    GtkWidget* strip = box;
    GtkWidget* around = gtk_widget_get_parent(strip);
    while (around != nullptr && GTK_IS_BIN(around) && !GTK_IS_WINDOW(around)) {
        strip = around;
        around = gtk_widget_get_parent(strip);
    }
    return strip;
}

gboolean hideEmptyStrip(gpointer widget) {
    GtkWidget* const box = gtk_widget_get_parent(GTK_WIDGET(widget));
    if (box != nullptr && !hasVisibleChild(box)) {
        gtk_widget_hide(stripAround(box));
    }
    return G_SOURCE_REMOVE;
}

// Before anything is drawn, but after the file manager has shown the strip.
void placed(GtkWidget* widget, GtkWidget*, gpointer) {
    (void)g_idle_add_full(G_PRIORITY_HIGH, &hideEmptyStrip, g_object_ref(widget), &g_object_unref);
}

} // namespace

GtkWidget* newUnseenWidget() {
    GtkWidget* const widget = gtk_event_box_new();
    gtk_widget_set_no_show_all(widget, TRUE);
    g_signal_connect(widget, "parent-set", G_CALLBACK(&placed), nullptr);
    return widget;
}

} // namespace FileManagers
