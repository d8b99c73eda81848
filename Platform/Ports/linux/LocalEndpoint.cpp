#include "Platform/Foundation/Exception.h"
#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/Registration.h"

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <unistd.h>

namespace NS {

namespace {

// Which port holds a name, for those who know the name only.
struct NameOwners {
    std::mutex mutex;
    std::map<std::string, LocalEndpoint*, std::less<>> byName;
};

// Never destroyed: a port may outlive every static object.
NameOwners& nameOwners() {
    static NameOwners& owners = *new NameOwners;
    return owners;
}

} // namespace

LocalEndpoint::LocalEndpoint() : Endpoint(PortIdentity::random(), ::getpid()) {}

LocalEndpoint::~LocalEndpoint() {
    {
        const std::scoped_lock lock(nameOwners().mutex);
        std::erase_if(nameOwners().byName,
                      [this](const auto& each) { return each.second == this; });
    }
    // Closing a connection takes it out of the list.
    const std::vector<Ref<Connection>> connections = connections_;
    for (const Ref<Connection>& connection : connections) {
        connection->close();
    }
}

void LocalEndpoint::serve(RunLoopSource& source) {
    if (loop_ != nullptr) {
        loop_->addSource_forMode(Ref<RunLoopSource>(source), RunLoopMode::kDefault);
    }
}

void LocalEndpoint::stopServing(RunLoopSource& source) {
    if (loop_ != nullptr) {
        loop_->removeSource_forMode(Ref<RunLoopSource>(source), RunLoopMode::kDefault);
    }
}

void LocalEndpoint::setRunLoop(RunLoop* loop) {
    const auto forEachSource = [this](void (LocalEndpoint::*act)(RunLoopSource&)) {
        for (const auto& registration : registrations_) {
            (this->*act)(registration->listener());
        }
        for (const Ref<Connection>& connection : connections_) {
            (this->*act)(connection);
        }
    };
    forEachSource(&LocalEndpoint::stopServing);
    loop_ = loop;
    forEachSource(&LocalEndpoint::serve);
}

bool LocalEndpoint::attach(const Ref<Connection>& connection) {
    if (connections_.size() >= PortLimits::kConnections) {
        notePortDrop(PortDrop::kTooManyPeers);
        return false;
    }
    try {
        serve(connection);
    } catch (const Exception&) {
        // The system waits for no more descriptors: a peer's coming must not end this process.
        notePortDrop(PortDrop::kTooManyPeers);
        return false;
    }
    connection->setReceiver(this);
    connections_.push_back(connection);
    return true;
}

void LocalEndpoint::detach(const Connection& connection) {
    const auto found = std::ranges::find(connections_, &connection,
                                         [](const Ref<Connection>& each) { return each.get(); });
    if (found != connections_.end()) {
        const Ref<Connection> kept = *found;
        connections_.erase(found);
        stopServing(kept);
    }
}

RefPtr<Connection> LocalEndpoint::connectionTo(const Endpoint& peer) const {
    const auto found = std::ranges::find_if(connections_, [&](const Ref<Connection>& each) {
        return each->peerPort() == peer.identity() && each->peerProcess() == peer.process() &&
               each->isOpen();
    });
    return found == connections_.end() ? RefPtr<Connection>() : RefPtr<Connection>(*found);
}

void LocalEndpoint::addRegistration(std::unique_ptr<Registration> registration) {
    serve(registration->listener());
    const std::scoped_lock lock(nameOwners().mutex);
    nameOwners().byName.insert_or_assign(registration->name(), this);
    registrations_.push_back(std::move(registration));
}

bool LocalEndpoint::removeName(std::string_view name) {
    LocalEndpoint* owner = nullptr;
    {
        const std::scoped_lock lock(nameOwners().mutex);
        const auto found = nameOwners().byName.find(name);
        if (found != nameOwners().byName.end()) {
            owner = found->second;
            nameOwners().byName.erase(found);
        }
    }
    // On the owner's thread, as every use of a port.
    return owner != nullptr && owner->removeRegistration(name);
}

bool LocalEndpoint::removeRegistration(std::string_view name) {
    const auto found =
        std::ranges::find(registrations_, name, [](const auto& each) { return each->name(); });
    if (found == registrations_.end()) {
        return false;
    }
    const std::unique_ptr<Registration> removed = std::move(*found);
    registrations_.erase(found);
    stopServing(removed->listener());
    // Who has found the port by its name keeps it, also when nobody has looked at the door yet.
    removed->listener()->acceptAll();
    return true;
}

void LocalEndpoint::deliver(const Ref<PortMessage>& message) {
    if (delegate_ == nullptr) {
        notePortDrop(PortDrop::kNoDelegate);
        return;
    }
    const Ref<MachPort> port(*port_);
    const Ref<MachPortDelegate> delegate(*delegate_);
    delegate->handlePortMessage(message);
}

bool LocalEndpoint::send(const Array& components, const RefPtr<MachPort>& from) {
    LocalEndpoint* const sender = from ? from->endpoint().local() : nullptr;
    const RefPtr<Connection> connection =
        from && sender == nullptr ? RefPtr<Connection>() : loopbackFrom(sender);
    if (!connection) {
        notePortDrop(PortDrop::kNoReplyRoute);
        return false;
    }
    return connection->send(components, from ? sender->identity() : PortIdentity{});
}

// Messages between ports of one process go through the kernel as all others do: they arrive when
// the loop runs, and a queue that is full is full.
RefPtr<Connection> LocalEndpoint::loopbackFrom(LocalEndpoint* sender) {
    RefPtr<Connection> known = sender != nullptr ? sender->connectionTo(*this) : loopback_;
    if (known && known->isOpen()) {
        return known;
    }
    const auto ends = Connection::pair(identity());
    if (!ends || !attach(ends->second)) {
        return nullptr;
    }
    if (sender != nullptr && !sender->attach(ends->first)) {
        ends->second->close();
        return nullptr;
    }
    if (sender == nullptr) {
        loopback_ = ends->first;
    }
    return ends->first;
}

} // namespace NS
