#pragma once

#include "FileManagers/GLib/Owned.h"
#include "FileManagers/Shared/Testing/DriveFixture.h"

#include <functional>
#include <stdexcept>
#include <string>

#include <gio/gio.h>

namespace Tests {

struct VariantUnref {
    void operator()(GVariant* value) const noexcept { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, VariantUnref>;

// Programs of GLib on a bus of the test's own: one that serves, and one that looks at it.
class GLibBusTest : public DriveTest {
  protected:
    using Bus = FileManagers::OwnedObject<GDBusConnection>;

    ~GLibBusTest() override {
        for (const Bus* const each : {&served, &looking}) {
            (void)g_dbus_connection_close_sync(each->get(), nullptr, nullptr);
        }
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
    }

    static Bus newConnection() {
        GDBusConnection* const bus = g_dbus_connection_new_for_address_sync(
            g_getenv("DBUS_SESSION_BUS_ADDRESS"),
            GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                 G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
        if (bus == nullptr) {
            throw std::runtime_error("no bus");
        }
        return Bus(bus);
    }
    // Runs the main loop, as a program does, until a condition holds.
    static bool runUntil(const std::function<bool()>& condition) {
        return waitUntil([&] {
            while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
            }
            return condition();
        });
    }
    // What the one that serves answers; empty for an error.
    Variant call(const char* object, const char* interface, const char* method,
                 GVariant* arguments = nullptr) {
        GAsyncResult* result = nullptr;
        const auto keep = [](GObject*, GAsyncResult* answer, gpointer kept) {
            *static_cast<GAsyncResult**>(kept) = G_ASYNC_RESULT(g_object_ref(answer));
        };
        g_dbus_connection_call(looking.get(), g_dbus_connection_get_unique_name(served.get()),
                               object, interface, method, arguments, nullptr,
                               G_DBUS_CALL_FLAGS_NONE, -1, nullptr, keep, &result);
        if (!runUntil([&] { return result != nullptr; })) {
            throw std::runtime_error("no answer");
        }
        const FileManagers::OwnedObject<GAsyncResult> owned(result);
        return Variant(g_dbus_connection_call_finish(looking.get(), result, nullptr));
    }

    Bus served = newConnection();
    Bus looking = newConnection();
};

} // namespace Tests
