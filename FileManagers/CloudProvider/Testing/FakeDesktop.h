#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <gio/gio.h>

namespace Tests {

// A desktop that shows notifications, on a connection to the bus that the main loop serves. The
// connection outlives it.
class FakeDesktop {
  public:
    // Throws when another one is there.
    explicit FakeDesktop(GDBusConnection* bus) : bus_(bus) {
        GVariant* const answer = g_dbus_connection_call_sync(
            bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "RequestName", g_variant_new("(su)", "org.freedesktop.Notifications", 0), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        if (answer == nullptr) {
            throw std::runtime_error("no name");
        }
        g_variant_unref(answer);
        static const GDBusInterfaceVTable kTable{&notify, nullptr, nullptr, {}};
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kDescription, nullptr);
        object_ =
            g_dbus_connection_register_object(bus, "/org/freedesktop/Notifications",
                                              node->interfaces[0], &kTable, this, nullptr, nullptr);
        g_dbus_node_info_unref(node);
    }
    ~FakeDesktop() { (void)g_dbus_connection_unregister_object(bus_, object_); }
    FakeDesktop(const FakeDesktop&) = delete;
    FakeDesktop& operator=(const FakeDesktop&) = delete;

    // "Program 0 icon: summary: body", with the number of the one that is replaced; a number counts
    // what was shown.
    std::vector<std::string> shown;

  private:
    static void notify(GDBusConnection*, const char*, const char*, const char*, const char*,
                       GVariant* arguments, GDBusMethodInvocation* call, gpointer self) {
        auto& shown = static_cast<FakeDesktop*>(self)->shown;
        const char* name = nullptr;
        unsigned replaced = 0;
        const char* icon = nullptr;
        const char* summary = nullptr;
        const char* body = nullptr;
        g_variant_get(arguments, "(&su&s&s&sasa{sv}i)", &name, &replaced, &icon, &summary, &body,
                      nullptr, nullptr, nullptr);
        shown.push_back(std::string(name) + " " + std::to_string(replaced) + " " + icon + ": " +
                        summary + ": " + body);
        g_dbus_method_invocation_return_value(
            call, g_variant_new("(u)", static_cast<unsigned>(shown.size())));
    }

    static constexpr const char* kDescription =
        "<node><interface name='org.freedesktop.Notifications'><method name='Notify'>"
        "<arg type='s' direction='in'/><arg type='u' direction='in'/>"
        "<arg type='s' direction='in'/><arg type='s' direction='in'/>"
        "<arg type='s' direction='in'/><arg type='as' direction='in'/>"
        "<arg type='a{sv}' direction='in'/><arg type='i' direction='in'/>"
        "<arg type='u' direction='out'/></method></interface></node>";

    GDBusConnection* bus_;
    unsigned object_;
};

} // namespace Tests
