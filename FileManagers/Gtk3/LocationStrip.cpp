#include "FileManagers/Gtk3/LocationStrip.h"

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

gboolean fit(gpointer widget) {
    GtkWidget* const box = gtk_widget_get_parent(GTK_WIDGET(widget));
    if (box != nullptr) {
        gtk_widget_set_visible(stripAround(box), hasVisibleChild(box) ? TRUE : FALSE);
    }
    return G_SOURCE_REMOVE;
}

// Before anything is drawn, but after the file manager has shown the strip.
void fitLater(GtkWidget* widget) {
    (void)g_idle_add_full(G_PRIORITY_HIGH, &fit, g_object_ref(widget), &g_object_unref);
}

void placed(GtkWidget* widget, GtkWidget*, gpointer) {
    fitLater(widget);
}

void shownOrHidden(GtkWidget* widget, GParamSpec*, gpointer) {
    fitLater(widget);
}

} // namespace

void followVisibility(GtkWidget* widget) {
    g_signal_connect(widget, "parent-set", G_CALLBACK(&placed), nullptr);
    g_signal_connect(widget, "notify::visible", G_CALLBACK(&shownOrHidden), nullptr);
}

} // namespace FileManagers
