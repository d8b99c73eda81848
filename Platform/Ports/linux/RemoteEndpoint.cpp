#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/linux/Endpoints.h"

#include <algorithm>

namespace NS {

RemoteEndpoint::RemoteEndpoint(const PortIdentity& identity, Ref<Connection> connection)
    : Endpoint(identity, connection->peerProcess()), connection_(std::move(connection)) {}

RemoteEndpoint::RemoteEndpoint(const PortIdentity& identity, Ref<Connection> connection,
                               RuntimeFolder folder, std::string socketName)
    : Endpoint(identity, connection->peerProcess()), connection_(std::move(connection)),
      folder_(std::move(folder)), socketName_(std::move(socketName)) {}

RemoteEndpoint::~RemoteEndpoint() = default;

bool RemoteEndpoint::send(const Array& components, const RefPtr<MachPort>& from) {
    if (!from) {
        return connection_->send(components, PortIdentity{});
    }
    LocalEndpoint* const receiver = from->endpoint().local();
    const RefPtr<Connection> connection =
        receiver != nullptr ? connectionFor(*receiver) : RefPtr<Connection>();
    if (!connection) {
        notePortDrop(isValid() ? PortDrop::kNoReplyRoute : PortDrop::kDeadPeer);
        return false;
    }
    return connection->send(components, receiver->identity());
}

// What comes back on a connection goes to one port. The first port that wants answers has the
// connection that the look-up made.
RefPtr<Connection> RemoteEndpoint::connectionFor(LocalEndpoint& receiver) {
    if (connection_->receiver() == &receiver) {
        return connection_;
    }
    const auto known = std::ranges::find(others_, &receiver,
                                         [](const Ref<Connection>& c) { return c->receiver(); });
    if (known != others_.end()) {
        return *known;
    }
    if (!folder_ || !connection_->isOpen()) {
        return nullptr;
    }
    if (connection_->receiver() == nullptr) {
        return receiver.attach(connection_) ? RefPtr<Connection>(connection_) : nullptr;
    }
    const RefPtr<Connection> added = Connection::connectTo(*folder_, socketName_);
    if (!added || !receiver.attach(Ref<Connection>(*added))) {
        return nullptr;
    }
    std::erase_if(others_, [](const Ref<Connection>& each) { return !each->isOpen(); });
    others_.emplace_back(*added);
    return added;
}

} // namespace NS
