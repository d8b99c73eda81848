#include "FileManagers/Thunar/Windows.h"

#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/Owned.h"
#include "FileManagers/Thunar/Interface.h"

#include <string>
#include <vector>

namespace FileManagers {

namespace {

constexpr const char* kFolderProperty = "current-directory";

// Empty for what is no folder of this machine.
std::string folderOf(GObject* window) {
    GObject* value = nullptr;
    g_object_get(window, kFolderProperty, &value, nullptr);
    const OwnedObject<GObject> folder(value);
    return folder && THUNARX_IS_FILE_INFO(folder.get())
               ? localPath(
                     OwnedText(thunarx_file_info_get_uri(THUNARX_FILE_INFO(folder.get()))).get())
               : "";
}

void folderChanged(GObject* window, GParamSpec*, gpointer drive) {
    const std::string folder = folderOf(window);
    static_cast<Drive*>(drive)->show(window, folder.empty() ? std::vector<std::string>()
                                                            : std::vector<std::string>{folder});
}

void windowGone(GtkWidget* window, gpointer drive) {
    g_signal_handlers_disconnect_by_data(window, drive);
    static_cast<Drive*>(drive)->close(window);
}

bool hasFolder(GObject* window) {
    const GParamSpec* const property =
        g_object_class_find_property(G_OBJECT_GET_CLASS(window), kFolderProperty);
    return property != nullptr && g_type_is_a(property->value_type, G_TYPE_OBJECT) != FALSE;
}

void windowAdded(GtkApplication*, GtkWindow* added, gpointer drive) {
    GObject* const window = G_OBJECT(added);
    if (!hasFolder(window)) {
        return;
    }
    g_signal_connect(window, "notify::current-directory", G_CALLBACK(&folderChanged), drive);
    g_signal_connect(window, "destroy", G_CALLBACK(&windowGone), drive);
    folderChanged(window, nullptr, drive);
}

} // namespace

void followWindows(Drive& drive) {
    GApplication* const application = g_application_get_default();
    if (!GTK_IS_APPLICATION(application)) {
        return;
    }
    g_signal_connect(application, "window-added", G_CALLBACK(&windowAdded), &drive);
    for (const GList* each = gtk_application_get_windows(GTK_APPLICATION(application));
         each != nullptr; each = each->next) {
        windowAdded(nullptr, GTK_WINDOW(each->data), &drive);
    }
}

} // namespace FileManagers
