#include "Platform/Ports/linux/Listener.h"

#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Connection.h"
#include "Platform/Ports/linux/Endpoints.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>

namespace NS {

constinit const Class Listener::kClass{.name = "NSMachPortListener",
                                       .superclass = &RunLoopSource::kClass};

namespace {

// A descriptor to give up when there is none left: a peer that can be neither taken in nor turned
// away would keep its listener ready for ever.
FileDescriptor& spareDescriptor() {
    static thread_local FileDescriptor spare(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    return spare;
}

// True when a peer was turned away.
bool turnAway(int listener) {
    spareDescriptor().reset();
    FileDescriptor refused(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
    const bool turned = static_cast<bool>(refused);
    refused.reset();
    spareDescriptor().reset(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (turned) {
        notePortDrop(PortDrop::kTooManyPeers);
    }
    return turned;
}

} // namespace

Listener::Listener(FileDescriptor socket, LocalEndpoint& owner) noexcept
    : socket_(std::move(socket)), owner_(&owner) {}

RefPtr<Listener> Listener::listenOn(const RuntimeFolder& folder, std::string_view socketName,
                                    LocalEndpoint& owner) {
    (void)spareDescriptor(); // while there is one to be had
    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = folder.address(socketName);
    if (!socket ||
        ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), SOMAXCONN) != 0) {
        return nullptr;
    }
    return make<Listener>(std::move(socket), owner);
}

void Listener::ready() {
    const Ref<Listener> kept(*this);
    for (int i = 0; i < PortLimits::kMessagesPerTurn && acceptOne(); ++i) {
    }
}

void Listener::acceptAll() {
    while (acceptOne()) {
    }
}

bool Listener::acceptOne() {
    if (owner_ == nullptr) {
        return false;
    }
    FileDescriptor socket(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) {
        if (errno == EMFILE || errno == ENFILE) {
            return turnAway(socket_.get());
        }
        return errno == EINTR || errno == ECONNABORTED;
    }
    if (const RefPtr<Connection> connection = Connection::fromPeer(std::move(socket))) {
        (void)owner_->attach(Ref<Connection>(*connection)); // one too many is closed and noted
    }
    return true;
}

} // namespace NS
