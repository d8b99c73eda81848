#include "FileManagers/CloudProvider/Notifications.h"

namespace FileManagers {

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kObject = "/org/freedesktop/Notifications";
constexpr int kAsLongAsOthers = -1;

} // namespace

Notifications::~Notifications() {
    g_cancellable_cancel(end_.get());
}

void Notifications::show(const NotDone& notDone) {
    const OwnedText body(g_markup_escape_text(notDone.why.c_str(), -1));
    GVariant* const arguments =
        g_variant_new("(susss@as@a{sv}i)", "Fennmoor Cloud", last_, "MainOnline",
                      notDone.what.c_str(), body.get(), g_variant_new_strv(nullptr, 0),
                      g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0), kAsLongAsOthers);
    g_dbus_connection_call(bus_, kName, kObject, kName, "Notify", arguments, G_VARIANT_TYPE("(u)"),
                           G_DBUS_CALL_FLAGS_NONE, -1, end_.get(), &shown, this);
}

void Notifications::shown(GObject* bus, GAsyncResult* result, gpointer self) {
    GVariant* const answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr);
    if (answer != nullptr) { // else nobody shows them, or this object has gone
        g_variant_get(answer, "(u)", &static_cast<Notifications*>(self)->last_);
        g_variant_unref(answer);
    }
}

} // namespace FileManagers
