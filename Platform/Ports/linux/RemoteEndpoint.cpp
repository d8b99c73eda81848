#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/linux/Endpoints.h"

namespace NS {

RemoteEndpoint::RemoteEndpoint(const PortIdentity& identity, Ref<Connection> connection) noexcept
    : Endpoint(identity, connection->peerProcess()), connection_(std::move(connection)) {}

bool RemoteEndpoint::send(const Array& components, const RefPtr<MachPort>& from) {
    if (!from) {
        return connection_->send(components, PortIdentity{});
    }
    LocalEndpoint* const receiver = from->endpoint().local();
    if (receiver != nullptr && connection_->receiver() == receiver) {
        return connection_->send(components, receiver->identity());
    }
    const RefPtr<Connection> connection =
        receiver != nullptr ? connectionFor(*receiver) : RefPtr<Connection>();
    if (!connection) {
        notePortDrop(isValid() ? PortDrop::kNoReplyRoute : PortDrop::kDeadPeer);
        return false;
    }
    return connection->send(components, receiver->identity());
}

// What comes back on a connection goes to one port, here not the one that the connection of the
// look-up leads to. The first that wants answers from a peer has the connection that the look-up
// made, and keeps it for every other look-up of the same peer.
RefPtr<Connection> RemoteEndpoint::connectionFor(LocalEndpoint& receiver) {
    if (!connection_->isOpen()) {
        return nullptr;
    }
    if (const RefPtr<Connection> known = receiver.connectionTo(*this)) {
        return known;
    }
    const RefPtr<Connection> fresh = connection_->receiver() == nullptr
                                         ? RefPtr<Connection>(connection_)
                                         : connection_->openFurther();
    return fresh && receiver.attach(Ref<Connection>(*fresh)) ? fresh : nullptr;
}

} // namespace NS
