#include "Benchmarks/linux/RawSocket.h"

#include "Platform/Ports/PortLimits.h"

#include <cerrno>
#include <cstring>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>

namespace Benchmarks {

namespace {

int packetSocket() {
    const int made = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (made < 0) {
        failSystem("socket");
    }
    return made;
}

sockaddr_un addressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

} // namespace

void failSystem(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

int listenAt(const std::filesystem::path& path) {
    const int made = packetSocket();
    const sockaddr_un address = addressOf(path);
    if (::bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(made, SOMAXCONN) != 0) {
        failSystem("bind");
    }
    return made;
}

int acceptFrom(int listener) {
    const int made = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (made < 0) {
        failSystem("accept");
    }
    return made;
}

int connectTo(const std::filesystem::path& path) {
    const int made = packetSocket();
    const sockaddr_un address = addressOf(path);
    if (::connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        failSystem("connect");
    }
    return made;
}

void raiseSendBuffer(int socket) {
    (void)::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &NS::PortLimits::kSendBuffer,
                       sizeof NS::PortLimits::kSendBuffer); // what it gives is what a port gets
}

int makeEpoll() {
    const int made = ::epoll_create1(EPOLL_CLOEXEC);
    if (made < 0) {
        failSystem("epoll_create1");
    }
    return made;
}

void watch(int epoll, int socket) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = socket;
    if (::epoll_ctl(epoll, EPOLL_CTL_ADD, socket, &event) != 0) {
        failSystem("epoll_ctl");
    }
}

int waitFor(int epoll) {
    epoll_event event{};
    int ready = 0;
    do {
        ready = ::epoll_wait(epoll, &event, 1, -1);
    } while (ready < 0 && errno == EINTR);
    if (ready != 1) {
        failSystem("epoll_wait");
    }
    return event.data.fd;
}

} // namespace Benchmarks
