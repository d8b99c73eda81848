#include "FileManagers/Thunar/Sidebar.h"

#include <memory>

namespace FileManagers {

namespace {

// Both the list of places and the tree have it.
constexpr const char* kSidebarInterface = "ThunarSidePane";

struct EventFree {
    void operator()(GdkEvent* event) const noexcept { gdk_event_free(event); }
};

GtkWidget* clickedOrFocused(GtkWidget* window) {
    const std::unique_ptr<GdkEvent, EventFree> event(gtk_get_current_event());
    const bool isClick = event && gdk_event_get_event_type(event.get()) == GDK_BUTTON_PRESS;
    return isClick ? gtk_get_event_widget(event.get()) : gtk_window_get_focus(GTK_WINDOW(window));
}

} // namespace

bool isMenuOfSidebar(GtkWidget* window) {
    const GType sidebar = g_type_from_name(kSidebarInterface);
    if (sidebar == 0) {
        return false;
    }
    GtkWidget* widget = clickedOrFocused(window);
    while (widget != nullptr && g_type_is_a(G_OBJECT_TYPE(widget), sidebar) == FALSE) {
        widget = gtk_widget_get_parent(widget);
    }
    return widget != nullptr;
}

} // namespace FileManagers
