#include "Platform/Ports/linux/Connection.h"

#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/Frame.h"

#include <atomic>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace NS {

constinit const Class Connection::kClass{.name = "NSMachPortConnection",
                                         .superclass = &RunLoopSource::kClass};

namespace {

constexpr uid_t kNobodyInParticular = static_cast<uid_t>(-1);
std::atomic<uid_t> expectedUser{kNobodyInParticular};

uid_t peerUserAllowed() noexcept {
    const uid_t user = expectedUser.load();
    return user == kNobodyInParticular ? ::geteuid() : user;
}

// The most that an untuned system grants, and enough for more than 256 small messages to wait for a
// peer that does not run its loop: the kernel doubles it and charges each message about 1,280 bytes. Where
// more could be had it is not asked for, since every peer can make the kernel keep as much.
void raiseSendBuffer(int socket) noexcept {
    constexpr int kWanted = 212992;
    (void)::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &kWanted, sizeof kWanted);
}

} // namespace

void setExpectedPeerUser(uid_t user) noexcept {
    expectedUser.store(user);
}

Connection::Connection(FileDescriptor socket, pid_t peerProcess) noexcept
    : socket_(std::move(socket)), peerProcess_(peerProcess) {}

Connection::~Connection() = default;

RefPtr<Connection> Connection::fromSocket(FileDescriptor socket) {
    ucred peer{};
    socklen_t length = sizeof peer;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0 ||
        peer.uid != peerUserAllowed()) {
        notePortDrop(PortDrop::kForeignUser);
        return nullptr;
    }
    raiseSendBuffer(socket.get());
    return make<Connection>(std::move(socket), peer.pid);
}

RefPtr<Connection> Connection::connectTo(const RuntimeFolder& folder, std::string_view socketName) {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = folder.address(socketName);
    if (!socket ||
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return nullptr;
    }
    return fromSocket(std::move(socket));
}

bool Connection::send(const Array& components, const PortIdentity& replyPort) {
    if (!socket_) {
        notePortDrop(PortDrop::kDeadPeer);
        return false;
    }
    const auto dropped = sendFrame(socket_.get(), components, replyPort);
    if (dropped) {
        notePortDrop(*dropped);
    }
    return !dropped;
}

bool Connection::isOpen() const {
    if (!socket_) {
        return false;
    }
    pollfd state{socket_.get(), 0, 0};
    return ::poll(&state, 1, 0) == 0;
}

void Connection::close() {
    const Ref<Connection> kept(*this);
    if (receiver_ != nullptr) {
        receiver_->detach(*this);
        receiver_ = nullptr;
    }
    socket_.reset();
    replyPort_ = nullptr;
}

void Connection::ready() {
    const Ref<Connection> kept(*this);
    for (int i = 0; i < PortLimits::kMessagesPerTurn && receiveOne(); ++i) {
    }
}

bool Connection::receiveOne() {
    // A handler may have closed it, or taken its port out of the loop.
    if (!socket_ || receiver_ == nullptr || !receiver_->isScheduled()) {
        return false;
    }
    auto received = receiveFrame(socket_.get());
    if (const auto* const frame = std::get_if<Frame>(&received)) {
        deliver(frame->replyPort, frame->components);
        return true;
    }
    if (const auto* const state = std::get_if<ReceiveState>(&received)) {
        if (*state == ReceiveState::kEnd) {
            close();
        }
        if (*state == ReceiveState::kLost) {
            notePortDrop(PortDrop::kTooManyPeers);
        }
        return *state == ReceiveState::kLost;
    }
    notePortDrop(std::get<PortDrop>(received));
    close();
    return false;
}

void Connection::deliver(const PortIdentity& replyPort, const Ref<Array>& components) {
    receiver_->deliver(make<PortMessage>(replyPortFor(replyPort), components));
}

RefPtr<MachPort> Connection::replyPortFor(const PortIdentity& identity) {
    if (identity.isNone()) {
        return nullptr;
    }
    if (!replyPort_ || !(replyPort_->endpoint().identity() == identity)) {
        replyPort_ =
            make<MachPort>(std::make_unique<RemoteEndpoint>(identity, Ref<Connection>(*this)));
    }
    return replyPort_;
}

} // namespace NS
