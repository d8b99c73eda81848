#include "Shell/Client/FollowedName.h"

#include <utility>

namespace Shell {

namespace {

constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kBusObject = "/org/freedesktop/DBus";

std::string ownerChangedOf(const char* name) {
    return std::string("type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
                       "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='") +
           name + "'";
}

} // namespace

// What the library calls. Nothing here raises: allocation alone could, and then nobody goes on.
struct FollowedName::Callbacks {
    static int ownerChanged(sd_bus_message* signal, void* object, sd_bus_error*) noexcept {
        const char* name = nullptr;
        const char* before = nullptr;
        const char* now = nullptr;
        if (sd_bus_message_read(signal, "sss", &name, &before, &now) >= 0) {
            static_cast<FollowedName*>(object)->setOwner(now);
        }
        return 0;
    }
    // An error says that nobody has the name.
    static int ownerTold(sd_bus_message* reply, void* object, sd_bus_error*) noexcept {
        const char* owner = "";
        if (sd_bus_message_is_method_error(reply, nullptr) > 0 ||
            sd_bus_message_read(reply, "s", &owner) < 0) {
            owner = "";
        }
        static_cast<FollowedName*>(object)->setOwner(owner);
        return 1;
    }
};

FollowedName::FollowedName(ClientConnection& connection, const char* name,
                           std::function<void()> onChange)
    : onChange_(std::move(onChange)) {
    sd_bus* const bus = connection.bus();
    if (bus == nullptr) {
        isKnown_ = true;
        return;
    }
    // What fails here is the connection itself, as whoever serves it will see.
    (void)sd_bus_add_match_async(bus, nullptr, ownerChangedOf(name).c_str(),
                                 &Callbacks::ownerChanged, nullptr, this);
    (void)sd_bus_call_method_async(bus, nullptr, kBusName, kBusObject, kBusName, "GetNameOwner",
                                   &Callbacks::ownerTold, this, "s", name);
    connection.awaitEvents();
}

void FollowedName::setOwner(const char* owner) {
    if (isKnown_ && owner_ == owner) {
        return;
    }
    isKnown_ = true;
    if (owner_ != owner) {
        owner_ = owner;
        ++changes_;
    }
    if (onChange_) {
        onChange_();
    }
}

} // namespace Shell
