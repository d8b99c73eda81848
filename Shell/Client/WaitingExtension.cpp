#include "Shell/Client/WaitingExtension.h"

#include "Shell/FinderInterface.h"

namespace Shell {

namespace {

constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kBusObject = "/org/freedesktop/DBus";

const std::string kOwnerChanged =
    std::string("type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='") +
    FinderInterface::kWaitingName + "'";

} // namespace

// What the library calls.
struct WaitingExtension::Callbacks {
    static int ownerChanged(sd_bus_message* signal, void* object, sd_bus_error*) noexcept {
        const char* name = nullptr;
        const char* before = nullptr;
        const char* now = "";
        if (sd_bus_message_read(signal, "sss", &name, &before, &now) >= 0) {
            static_cast<WaitingExtension*>(object)->setThere(*now != '\0');
        }
        return 0;
    }
    static int told(sd_bus_message* reply, void* object, sd_bus_error*) noexcept {
        int isThere = 0;
        (void)sd_bus_message_read(reply, "b", &isThere); // an error says no more than no
        static_cast<WaitingExtension*>(object)->setThere(isThere != 0);
        return 1;
    }
};

WaitingExtension::WaitingExtension(ClientConnection& connection) {
    sd_bus* const bus = connection.bus();
    if (bus == nullptr) {
        return;
    }
    // What fails here is the connection itself, as whoever serves it will see.
    (void)sd_bus_add_match_async(bus, nullptr, kOwnerChanged.c_str(), &Callbacks::ownerChanged,
                                 nullptr, this);
    (void)sd_bus_call_method_async(bus, nullptr, kBusName, kBusObject, kBusName, "NameHasOwner",
                                   &Callbacks::told, this, "s", FinderInterface::kWaitingName);
    connection.awaitEvents();
}

void WaitingExtension::setThere(bool isThere) noexcept {
    if (isThere != isThere_) {
        isThere_ = isThere;
        ++changes_;
    }
}

} // namespace Shell
