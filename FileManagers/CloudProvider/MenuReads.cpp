#include "FileManagers/CloudProvider/MenuReads.h"

#include <atomic>
#include <utility>

namespace FileManagers {

// What the bus's thread and the main loop share; a call that is under way keeps it.
struct MenuReads::Watch {
    std::atomic<bool> isTold = false;
    std::function<void()> onRead; // of the main loop; empty once nobody wants to be told

    using Shared = std::shared_ptr<Watch>;

    static void forget(gpointer shared) { delete static_cast<Shared*>(shared); }

    static gboolean tell(gpointer shared) {
        const Shared watch = *static_cast<Shared*>(shared);
        watch->isTold = false;
        if (const auto onRead = watch->onRead) {
            onRead();
        }
        return G_SOURCE_REMOVE;
    }

    // On the bus's thread.
    static GDBusMessage* filter(GDBusConnection*, GDBusMessage* message, gboolean isIncoming,
                                gpointer shared) {
        const Shared& watch = *static_cast<Shared*>(shared);
        if (isIncoming != FALSE &&
            g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
            g_strcmp0(g_dbus_message_get_interface(message), "org.gtk.Menus") == 0 &&
            g_strcmp0(g_dbus_message_get_member(message), "Start") == 0 &&
            !watch->isTold.exchange(true)) {
            (void)g_idle_add_full(G_PRIORITY_HIGH, &tell, new Shared(watch), &forget);
        }
        return message;
    }
};

MenuReads::MenuReads(GDBusConnection* bus, std::function<void()> onRead)
    : bus_(bus), watch_(std::make_shared<Watch>()) {
    watch_->onRead = std::move(onRead);
    filter_ = g_dbus_connection_add_filter(bus_, &Watch::filter, new Watch::Shared(watch_),
                                           &Watch::forget);
}

MenuReads::~MenuReads() {
    watch_->onRead = nullptr;
    g_dbus_connection_remove_filter(bus_, filter_);
}

} // namespace FileManagers
