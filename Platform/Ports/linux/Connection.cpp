#include "Platform/Ports/linux/Connection.h"

#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Endpoints.h"

#include <array>
#include <atomic>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace NS {

constinit const Class Connection::kClass{.name = "NSMachPortConnection",
                                         .superclass = &RunLoopSource::kClass};

namespace {

constexpr int kKind = SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK;

constexpr uid_t kOwnUser = static_cast<uid_t>(-1);
std::atomic<uid_t> expectedUser{kOwnUser};

uid_t userLetIn() noexcept {
    const uid_t user = expectedUser.load(std::memory_order_relaxed);
    return user == kOwnUser ? ::geteuid() : user;
}

// The peer's process, if it is one of this user; nothing, with the drop noted, if not.
std::optional<pid_t> checkedPeer(const FileDescriptor& socket) {
    ucred peer{};
    socklen_t length = sizeof peer;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0 ||
        peer.uid != userLetIn()) {
        notePortDrop(PortDrop::kForeignUser);
        return std::nullopt;
    }
    return peer.pid;
}

void raiseSendBuffer(const FileDescriptor& socket) noexcept {
    // Whatever the kernel makes of it is the best there is.
    (void)::setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &PortLimits::kSendBuffer,
                       sizeof PortLimits::kSendBuffer);
}

// Two sockets connected to each other; none when the system refuses them.
std::pair<FileDescriptor, FileDescriptor> connectedSockets() {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, kKind, 0, ends.data()) != 0) {
        return {};
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

bool isPacketSocket(const FileDescriptor& socket) noexcept {
    const auto option = [&](int name) {
        int value = -1;
        socklen_t length = sizeof value;
        return ::getsockopt(socket.get(), SOL_SOCKET, name, &value, &length) == 0 ? value : -1;
    };
    return option(SO_DOMAIN) == AF_UNIX && option(SO_TYPE) == SOCK_SEQPACKET;
}

} // namespace

void setExpectedPeerUser(uid_t user) noexcept {
    expectedUser.store(user, std::memory_order_relaxed);
}

void resetExpectedPeerUser() noexcept {
    setExpectedPeerUser(kOwnUser);
}

Connection::Connection(FileDescriptor socket, pid_t peerProcess,
                       const PortIdentity& peerPort) noexcept
    : socket_(std::move(socket)), peerProcess_(peerProcess), peerPort_(peerPort) {
    raiseSendBuffer(socket_);
}

RefPtr<Connection> Connection::fromPeer(FileDescriptor socket) {
    const auto process = checkedPeer(socket);
    return process
               ? RefPtr<Connection>(make<Connection>(std::move(socket), *process, PortIdentity{}))
               : nullptr;
}

RefPtr<Connection> Connection::connectTo(const RuntimeFolder& folder, std::string_view socketName,
                                         const PortIdentity& peerPort) {
    FileDescriptor socket(::socket(AF_UNIX, kKind, 0));
    const sockaddr_un address = folder.address(socketName);
    if (!socket ||
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return nullptr;
    }
    const auto process = checkedPeer(socket);
    return process ? RefPtr<Connection>(make<Connection>(std::move(socket), *process, peerPort))
                   : nullptr;
}

std::optional<std::pair<Ref<Connection>, Ref<Connection>>>
Connection::pair(const PortIdentity& peerPort) {
    auto [first, second] = connectedSockets();
    if (!second) {
        return std::nullopt;
    }
    return std::pair(make<Connection>(std::move(first), ::getpid(), peerPort),
                     make<Connection>(std::move(second), ::getpid(), PortIdentity{}));
}

RefPtr<Connection> Connection::openFurther() {
    auto [own, theirs] = connectedSockets();
    if (!socket_ || !theirs || sendConnectionFrame(socket_.get(), theirs)) {
        return nullptr;
    }
    // The kernel knows this process as the maker of both ends, the peer as well.
    return make<Connection>(std::move(own), peerProcess_, peerPort_);
}

bool Connection::send(const Array& components, const PortIdentity& replyPort) {
    const std::optional<PortDrop> dropped =
        socket_ ? sendFrame(socket_.get(), components, replyPort, waiting_) : PortDrop::kDeadPeer;
    if (dropped) {
        notePortDrop(*dropped);
    }
    return !dropped;
}

bool Connection::isOpen() const noexcept {
    pollfd state{socket_.get(), 0, 0};
    return socket_ && ::poll(&state, 1, 0) == 0;
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
    const int most = turns_.beginTurn();
    int taken = 0;
    while (taken < most && receiveOne()) {
        ++taken;
    }
    if (taken == most && announced_ == Announced::kYes) { // no message yet
        (void)receiveOne();
    }
    turns_.endTurn(most, taken);
}

bool Connection::receiveOne() {
    // A handler may have closed it, or taken its port out of the loop.
    if (!socket_ || receiver_ == nullptr || !receiver_->isScheduled()) {
        return false;
    }
    return handle(receiveFrame(socket_.get(), announced_));
}

bool Connection::handle(Received received) {
    if (const auto* const state = std::get_if<ReceiveState>(&received)) {
        return handle(*state);
    }
    announced_ = Announced::kNo;
    if (auto* const frame = std::get_if<Frame>(&received)) {
        return take(std::move(*frame));
    }
    if (auto* const socket = std::get_if<FileDescriptor>(&received)) {
        return adopt(std::move(*socket));
    }
    return cutOff(std::get<PortDrop>(received));
}

bool Connection::handle(ReceiveState state) {
    switch (state) {
    case ReceiveState::kNothing:
        return false;
    case ReceiveState::kEnd:
        close();
        return false;
    case ReceiveState::kLost:
        announced_ = Announced::kNo;
        notePortDrop(PortDrop::kNoRoom);
        return true;
    case ReceiveState::kAnnounced:
        announced_ = Announced::kYes;
        return true;
    }
    return false;
}

bool Connection::take(Frame frame) {
    if (!frame.replyPort.isNone() && !(frame.replyPort == peerPort_)) {
        // There is one port at each end, and who it is does not change.
        if (!peerPort_.isNone()) {
            return cutOff(PortDrop::kMalformedFrame);
        }
        peerPort_ = frame.replyPort;
    }
    receiver_->deliver(make<PortMessage>(frame.replyPort.isNone() ? nullptr : replyPort(),
                                         std::move(frame.components)));
    return true;
}

bool Connection::cutOff(PortDrop reason) {
    notePortDrop(reason);
    close();
    return false;
}

bool Connection::adopt(FileDescriptor socket) {
    if (!isPacketSocket(socket)) {
        return cutOff(PortDrop::kMalformedFrame);
    }
    if (const RefPtr<Connection> further = fromPeer(std::move(socket))) {
        (void)receiver_->attach(Ref<Connection>(*further)); // one too many is closed and noted
    }
    return true;
}

RefPtr<MachPort> Connection::replyPort() {
    if (!replyPort_) {
        replyPort_ =
            make<MachPort>(std::make_unique<RemoteEndpoint>(peerPort_, Ref<Connection>(*this)));
    }
    return replyPort_;
}

} // namespace NS
