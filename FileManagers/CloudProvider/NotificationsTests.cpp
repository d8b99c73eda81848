#include "FileManagers/CloudProvider/Notifications.h"

#include "FileManagers/CloudProvider/Testing/BusFixture.h"

namespace {

constexpr const char* kDesktop =
    "<node><interface name='org.freedesktop.Notifications'><method name='Notify'>"
    "<arg type='s' direction='in'/><arg type='u' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='as' direction='in'/>"
    "<arg type='a{sv}' direction='in'/><arg type='i' direction='in'/>"
    "<arg type='u' direction='out'/></method></interface></node>";

// The program that looks is the desktop, which shows them.
class Notifications : public Tests::GLibBusTest {
  protected:
    static void notify(GDBusConnection*, const char*, const char*, const char*, const char*,
                       GVariant* arguments, GDBusMethodInvocation* call, gpointer self) {
        auto& shown = static_cast<Notifications*>(self)->shown;
        const char* name = nullptr;
        unsigned replaced = 0;
        const char* icon = nullptr;
        const char* summary = nullptr;
        const char* body = nullptr;
        g_variant_get(arguments, "(&su&s&s&s@as@a{sv}i)", &name, &replaced, &icon, &summary, &body,
                      nullptr, nullptr, nullptr);
        shown.push_back(std::string(name) + " " + std::to_string(replaced) + " " + icon + ": " +
                        summary + ": " + body);
        g_dbus_method_invocation_return_value(
            call, g_variant_new("(u)", static_cast<unsigned>(shown.size())));
    }
    void showNotifications() {
        const auto answer = Tests::Variant(g_dbus_connection_call_sync(
            looking.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "RequestName", g_variant_new("(su)", "org.freedesktop.Notifications", 0), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        ASSERT_TRUE(answer);
        static const GDBusInterfaceVTable kTable{&notify, nullptr, nullptr, {}};
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kDesktop, nullptr);
        (void)g_dbus_connection_register_object(looking.get(), "/org/freedesktop/Notifications",
                                                node->interfaces[0], &kTable, this, nullptr,
                                                nullptr);
        g_dbus_node_info_unref(node);
    }

    Titles shown;
    std::optional<FileManagers::Notifications> notifications{served.get()};
};

TEST_F(Notifications, TellWhatWasNotDoneAndWhy) {
    showNotifications();
    notifications->show({"“A & B” could not be carried out", "Nothing <was> done & well."});
    EXPECT_TRUE(runUntil([&] { return shown.size() == 1; }));
    EXPECT_EQ(shown, Titles{"Fennmoor Cloud 0 MainOnline: “A & B” could not be carried out: "
                            "Nothing &lt;was&gt; done &amp; well."});
}

TEST_F(Notifications, ReplaceTheOneBefore) {
    showNotifications();
    for (const std::size_t count : {1U, 2U}) {
        notifications->show({"a", "b"});
        ASSERT_TRUE(runUntil([&] { return shown.size() == count; }));
        (void)call("/", "org.freedesktop.DBus.Peer", "Ping"); // the answer comes before its own
    }
    EXPECT_EQ(shown[1], "Fennmoor Cloud 1 MainOnline: a: b");
}

TEST_F(Notifications, EndWithTheirObject) {
    showNotifications();
    notifications->show({"a", "b"});
    notifications.reset();
    EXPECT_TRUE(runUntil([&] { return shown.size() == 1; }));
    (void)call("/", "org.freedesktop.DBus.Peer", "Ping");
}

} // namespace
