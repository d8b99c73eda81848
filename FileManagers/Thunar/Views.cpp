#include "FileManagers/Thunar/Views.h"

#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/Owned.h"
#include "FileManagers/Thunar/Interface.h"

#include <string>
#include <vector>

namespace FileManagers {

namespace {

constexpr const char* kViewInterface = "ThunarView"; // of what shows a folder, one in each tab
constexpr const char* kFolderProperty = "current-directory";

bool isView(GtkWidget* widget) {
    const GType view = g_type_from_name(kViewInterface);
    const GParamSpec* const property =
        view != 0 && g_type_is_a(G_OBJECT_TYPE(widget), view) != FALSE
            ? g_object_class_find_property(G_OBJECT_GET_CLASS(widget), kFolderProperty)
            : nullptr;
    return property != nullptr && g_type_is_a(property->value_type, G_TYPE_OBJECT) != FALSE;
}

// Empty for what is no folder of this machine.
std::string folderOf(GtkWidget* view) {
    GObject* value = nullptr;
    g_object_get(view, kFolderProperty, &value, nullptr);
    const OwnedObject<GObject> folder(value);
    return folder && THUNARX_IS_FILE_INFO(folder.get())
               ? localPath(
                     OwnedText(thunarx_file_info_get_uri(THUNARX_FILE_INFO(folder.get()))).get())
               : "";
}

void tell(GtkWidget* view, Drive& drive) {
    const std::string folder = gtk_widget_get_mapped(view) != FALSE ? folderOf(view) : "";
    drive.show(view,
               folder.empty() ? std::vector<std::string>() : std::vector<std::string>{folder});
}

void folderChanged(GtkWidget* view, GParamSpec*, gpointer drive) {
    tell(view, *static_cast<Drive*>(drive));
}

void hidden(GtkWidget* view, gpointer drive) {
    static_cast<Drive*>(drive)->close(view);
}

void gone(GtkWidget* view, gpointer drive) {
    g_signal_handlers_disconnect_by_data(view, drive);
    static_cast<Drive*>(drive)->close(view);
}

void follow(GtkWidget* view, gpointer drive) {
    if (g_signal_handler_find(view, G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, drive) == 0) {
        g_signal_connect(view, "notify::current-directory", G_CALLBACK(&folderChanged), drive);
        g_signal_connect(view, "unmap", G_CALLBACK(&hidden), drive);
        g_signal_connect(view, "destroy", G_CALLBACK(&gone), drive);
    }
    tell(view, *static_cast<Drive*>(drive));
}

gboolean mapped(GSignalInvocationHint*, guint, const GValue* values, gpointer drive) {
    auto* const widget = static_cast<GtkWidget*>(g_value_get_object(values));
    if (isView(widget)) {
        follow(widget, drive);
    }
    return TRUE; // for the next one as well
}

void followIn(GtkWidget* widget, gpointer drive) {
    if (isView(widget)) {
        follow(widget, drive);
    } else if (GTK_IS_CONTAINER(widget)) {
        gtk_container_forall(GTK_CONTAINER(widget), &followIn, drive);
    }
}

} // namespace

void followViews(Drive& drive) {
    (void)g_signal_add_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), 0, &mapped, &drive,
                                     nullptr);
    GList* const windows = gtk_window_list_toplevels();
    for (const GList* each = windows; each != nullptr; each = each->next) {
        followIn(GTK_WIDGET(each->data), &drive);
    }
    g_list_free(windows);
}

} // namespace FileManagers
