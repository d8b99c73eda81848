#include "Platform/Ports/MachBootstrapServer.h"

#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/Registration.h"

#include <optional>
#include <utility>

namespace NS {

constinit const Class MachBootstrapServer::kClass{.name = "NSMachBootstrapServer",
                                                  .superclass = &Object::kClass};

Ref<MachBootstrapServer> MachBootstrapServer::sharedInstance() {
    static const Ref<MachBootstrapServer>& instance =
        *new Ref<MachBootstrapServer>(make<MachBootstrapServer>());
    return instance;
}

bool MachBootstrapServer::registerPort_name(const Ref<MachPort>& port, const String& name) {
    LocalEndpoint* const own = port->endpoint().local();
    if (own == nullptr) {
        return false;
    }
    auto registration = Registration::claim(name.fileSystemRepresentation(), *own);
    if (!registration) {
        return false;
    }
    own->addRegistration(std::move(registration));
    return true;
}

RefPtr<MachPort> MachBootstrapServer::portForName(const String& name) {
    const std::optional<RuntimeFolder> folder = RuntimeFolder::open();
    const std::optional<NameEntry> entry =
        folder ? NameEntry::read(*folder, name.fileSystemRepresentation()) : std::nullopt;
    const RefPtr<Connection> connection =
        entry ? Connection::connectTo(*folder, entry->socketName, entry->port)
              : RefPtr<Connection>();
    if (!connection) {
        return nullptr;
    }
    return make<MachPort>(
        std::make_unique<RemoteEndpoint>(entry->port, Ref<Connection>(*connection)));
}

bool MachBootstrapServer::removePortForName(const String& name) {
    return LocalEndpoint::removeName(name.fileSystemRepresentation());
}

} // namespace NS
