#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/Registration.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <sys/socket.h>
#include <unistd.h>

namespace NS {

namespace {

// The ports of this process, of whichever thread, for those who know a name only.
struct Ports {
    std::mutex mutex;
    std::vector<LocalEndpoint*> all;
};

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

void LocalEndpoint::setRunLoop(RunLoop* loop) {
    const auto forEachSource = [this](auto&& act) {
        for (const auto& registration : registrations_) {
            act(Ref<RunLoopSource>(registration->listener()));
        }
        for (const Ref<Connection>& connection : connections_) {
            act(Ref<RunLoopSource>(connection));
        }
    };
    if (loop_ != nullptr) {
        forEachSource([this](const Ref<RunLoopSource>& source) {
            loop_->removeSource_forMode(source, RunLoopMode::kDefault);
        });
    }
    loop_ = loop;
    if (loop_ != nullptr) {
        forEachSource([this](const Ref<RunLoopSource>& source) {
            loop_->addSource_forMode(source, RunLoopMode::kDefault);
        });
    }
}

bool LocalEndpoint::attach(const Ref<Connection>& connection) {
    if (connections_.size() >= PortLimits::kConnections) {
        return false;
    }
    connection->setReceiver(this);
    connections_.push_back(connection);
    if (loop_ != nullptr) {
        loop_->addSource_forMode(connection, RunLoopMode::kDefault);
    }
    return true;
}

void LocalEndpoint::detach(const Connection& connection) {
    const auto found = std::ranges::find(connections_, &connection,
                                         [](const Ref<Connection>& each) { return each.get(); });
    if (found == connections_.end()) {
        return;
    }
    if (loop_ != nullptr) {
        loop_->removeSource_forMode(*found, RunLoopMode::kDefault);
    }
    connections_.erase(found);
}

void LocalEndpoint::addRegistration(std::unique_ptr<Registration> registration) {
    if (loop_ != nullptr) {
        loop_->addSource_forMode(registration->listener(), RunLoopMode::kDefault);
    }
    registrations_.push_back(std::move(registration));
}

bool LocalEndpoint::removeName(std::string_view name) {
    const std::scoped_lock lock(processPorts().mutex);
    return std::ranges::any_of(processPorts().all,
                               [&](LocalEndpoint* each) { return each->removeRegistration(name); });
}

bool LocalEndpoint::removeRegistration(std::string_view name) {
    const auto found =
        std::ranges::find(registrations_, name, [](const auto& each) { return each->name(); });
    if (found == registrations_.end()) {
        return false;
    }
    if (loop_ != nullptr) {
        loop_->removeSource_forMode((*found)->listener(), RunLoopMode::kDefault);
    }
    registrations_.erase(found);
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

RefPtr<Connection> LocalEndpoint::loopbackFor(const RefPtr<MachPort>& from) {
    const PortIdentity answers = from ? from->endpoint().identity() : PortIdentity{};
    const auto found =
        std::ranges::find(loopbacks_, answers, [](const auto& e) { return e.first; });
    if (found != loopbacks_.end() && found->second->isOpen()) {
        return found->second;
    }
    if (found != loopbacks_.end()) {
        loopbacks_.erase(found);
    }
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) {
        return nullptr;
    }
    const auto outgoing = Connection::fromSocket(FileDescriptor(ends[0]));
    const auto incoming = Connection::fromSocket(FileDescriptor(ends[1]));
    LocalEndpoint* const answered = from ? from->endpoint().local() : nullptr;
    if (!outgoing || !incoming || !attach(Ref<Connection>(*incoming)) ||
        (answered != nullptr && !answered->attach(Ref<Connection>(*outgoing)))) {
        return nullptr;
    }
    loopbacks_.emplace_back(answers, Ref<Connection>(*outgoing));
    return outgoing;
}

bool LocalEndpoint::send(const Array& components, const RefPtr<MachPort>& from) {
    if (from && from->endpoint().local() == nullptr) {
        notePortDrop(PortDrop::kNoReplyRoute);
        return false;
    }
    const RefPtr<Connection> connection = loopbackFor(from);
    if (!connection) {
        notePortDrop(PortDrop::kTooManyPeers);
        return false;
    }
    return connection->send(components, from ? from->endpoint().identity() : PortIdentity{});
}

} // namespace NS
