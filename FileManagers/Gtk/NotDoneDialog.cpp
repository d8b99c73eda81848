#include "FileManagers/Gtk/NotDoneDialog.h"

#include <gtk/gtk.h>

namespace FileManagers {

namespace {

// This file is compiled for each of GTK's versions that plug-ins need.
#if GTK_MAJOR_VERSION == 3
constexpr auto* kDestroy = &gtk_widget_destroy;
#else
constexpr auto* kDestroy = &gtk_window_destroy;
#endif

GtkWindow* activeWindow() {
    GApplication* const application = g_application_get_default();
    return GTK_IS_APPLICATION(application)
               ? gtk_application_get_active_window(GTK_APPLICATION(application))
               : nullptr;
}

GtkWidget* newDialog() {
    GtkWidget* const dialog =
        gtk_message_dialog_new(activeWindow(), GTK_DIALOG_DESTROY_WITH_PARENT, GTK_MESSAGE_WARNING,
                               GTK_BUTTONS_CLOSE, nullptr);
    g_signal_connect(dialog, "response", G_CALLBACK(kDestroy), nullptr);
    return dialog;
}

} // namespace

void showNotDone(const NotDone& notDone) {
    static GtkWidget* shown = nullptr; // a weak reference
    if (shown == nullptr) {
        shown = newDialog();
        g_object_add_weak_pointer(G_OBJECT(shown), reinterpret_cast<gpointer*>(&shown));
    }
    g_object_set(shown, "text", notDone.what.c_str(), "secondary-text", notDone.why.c_str(),
                 nullptr);
    gtk_window_present(GTK_WINDOW(shown));
}

} // namespace FileManagers
