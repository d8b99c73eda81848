#include "FileManagers/Nautilus/OpenWindows.h"

#include "FileManagers/GLib/LocalPath.h"
#include "FileManagers/GLib/Owned.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtk/gtk.h>

namespace FileManagers {

namespace {

constexpr const char* kPath = "/org/freedesktop/FileManager1";
constexpr const char* kInterface = "org.freedesktop.FileManager1";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kWindows = "OpenWindowsWithLocations"; // their names, with URIs of each

struct VariantUnref {
    void operator()(GVariant* value) const noexcept { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, VariantUnref>;

class OpenWindows {
  public:
    OpenWindows(Drive& drive, GtkApplication* application, GDBusConnection* bus);
    ~OpenWindows();
    OpenWindows(const OpenWindows&) = delete;
    OpenWindows& operator=(const OpenWindows&) = delete;

  private:
    static void changed(GDBusConnection*, const char*, const char*, const char*, const char*,
                        GVariant* parameters, gpointer self);
    static void answered(GObject* bus, GAsyncResult* result, gpointer self);
    static void removed(GtkApplication*, GtkWindow*, gpointer self);
    void tell();
    bool isOpen(const char* window) const;

    Drive& drive_;
    OwnedObject<GtkApplication> application_;
    OwnedObject<GDBusConnection> bus_;
    OwnedObject<GCancellable> end_{g_cancellable_new()};
    unsigned subscription_;
    unsigned long removal_;
    Variant windows_; // as reported last
};

OpenWindows::OpenWindows(Drive& drive, GtkApplication* application, GDBusConnection* bus)
    : drive_(drive), application_(GTK_APPLICATION(g_object_ref(application))),
      bus_(G_DBUS_CONNECTION(g_object_ref(bus))) {
    const char* const name = g_dbus_connection_get_unique_name(bus);
    subscription_ = g_dbus_connection_signal_subscribe(bus, name, kProperties, "PropertiesChanged",
                                                       kPath, kInterface, G_DBUS_SIGNAL_FLAGS_NONE,
                                                       &changed, this, nullptr);
    removal_ = g_signal_connect(application, "window-removed", G_CALLBACK(&removed), this);
    g_dbus_connection_call(bus, name, kPath, kProperties, "Get",
                           g_variant_new("(ss)", kInterface, kWindows), G_VARIANT_TYPE("(v)"),
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, end_.get(), &answered, this);
}

OpenWindows::~OpenWindows() {
    g_cancellable_cancel(end_.get());
    g_signal_handler_disconnect(application_.get(), removal_);
    g_dbus_connection_signal_unsubscribe(bus_.get(), subscription_);
}

void OpenWindows::changed(GDBusConnection*, const char*, const char*, const char*, const char*,
                          GVariant* parameters, gpointer self) {
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sa{sv}as)")) == FALSE) {
        return;
    }
    const Variant properties(g_variant_get_child_value(parameters, 1));
    Variant windows(g_variant_lookup_value(properties.get(), kWindows, G_VARIANT_TYPE("a{sas}")));
    if (windows) {
        auto* const object = static_cast<OpenWindows*>(self);
        object->windows_ = std::move(windows);
        object->tell();
    }
}

void OpenWindows::answered(GObject* bus, GAsyncResult* result, gpointer self) {
    const Variant answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
    if (!answer) { // or the object has gone
        return;
    }
    GVariant* value = nullptr;
    g_variant_get(answer.get(), "(v)", &value);
    Variant windows(value);
    if (g_variant_is_of_type(value, G_VARIANT_TYPE("a{sas}")) != FALSE) {
        auto* const object = static_cast<OpenWindows*>(self);
        object->windows_ = std::move(windows);
        object->tell();
    }
}

void OpenWindows::removed(GtkApplication*, GtkWindow*, gpointer self) {
    static_cast<OpenWindows*>(self)->tell();
}

void OpenWindows::tell() {
    std::vector<std::string> folders;
    GVariantIter each;
    const char* window = nullptr;
    GVariantIter* locations = nullptr;
    if (windows_) {
        g_variant_iter_init(&each, windows_.get());
        while (g_variant_iter_loop(&each, "{&sas}", &window, &locations) != FALSE) {
            const char* uri = nullptr;
            while (isOpen(window) && g_variant_iter_next(locations, "&s", &uri) != FALSE) {
                folders.push_back(localPath(uri));
            }
        }
    }
    std::erase(folders, "");
    drive_.show(this, folders);
}

bool OpenWindows::isOpen(const char* window) const {
    const char* const slash = std::strrchr(window, '/');
    guint64 number = 0;
    return slash == nullptr ||
           g_ascii_string_to_unsigned(slash + 1, 10, 1, G_MAXUINT, &number, nullptr) == FALSE ||
           gtk_application_get_window_by_id(application_.get(), static_cast<guint>(number)) !=
               nullptr;
}

void destroy(gpointer windows) {
    delete static_cast<OpenWindows*>(windows);
}

} // namespace

void followOpenWindows(GObject* owner, Drive& drive) {
    constexpr const char* kKey = "quorvane-open-windows";
    GApplication* const application = g_application_get_default();
    if (g_object_get_data(owner, kKey) != nullptr || !GTK_IS_APPLICATION(application)) {
        return;
    }
    if (GDBusConnection* const bus = g_application_get_dbus_connection(application)) {
        g_object_set_data_full(owner, kKey,
                               new OpenWindows(drive, GTK_APPLICATION(application), bus), &destroy);
    }
}

} // namespace FileManagers
