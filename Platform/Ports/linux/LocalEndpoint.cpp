#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/Registration.h"

#include <algorithm>
#include <mutex>
#include <unistd.h>

namespace NS {

namespace {

// The ports of this process, of whichever thread, for those who know a name only.
struct Ports {
    std::mutex mutex;
    std::vector<LocalEndpoint*> all;
};

// Never destroyed: a port may outlive every static object.
Ports& processPorts() {
    static Ports& ports = *new Ports;
    return ports;
}

} // namespace

LocalEndpoint::LocalEndpoint() : Endpoint(PortIdentity::random(), ::getpid()) {
    const std::scoped_lock lock(processPorts().mutex);
    processPorts().all.push_back(this);
}

LocalEndpoint::~LocalEndpoint() {
    {
        const std::scoped_lock lock(processPorts().mutex);
        std::erase(processPorts().all, this);
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
    serve(connection);
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
    registrations_.push_back(std::move(registration));
}

bool LocalEndpoint::removeName(std::string_view name) {
    std::vector<LocalEndpoint*> ports;
    {
        const std::scoped_lock lock(processPorts().mutex);
        ports = processPorts().all;
    }
    return std::ranges::any_of(ports,
                               [&](LocalEndpoint* each) { return each->removeRegistration(name); });
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
