#include "Benchmarks/linux/RawQueue.h"

#include "Benchmarks/linux/RawSocket.h"

#include <array>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace Benchmarks {

int messagesThatWaitInSocket() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        failSystem("socketpair");
    }
    const std::array<std::byte, kRawLength> message{};
    int count = 0;
    while (::send(ends[0], message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL) > 0) {
        ++count;
    }
    (void)::close(ends[0]);
    (void)::close(ends[1]);
    return count;
}

SocketWatch::SocketWatch()
    : socket_(connectTo(std::filesystem::path(std::getenv("HOME")) / "raw")), epoll_(makeEpoll()) {
    watch(epoll_, socket_);
}

SocketWatch::~SocketWatch() {
    (void)::close(socket_);
    (void)::close(epoll_);
}

void SocketWatch::awaitDeath() {
    char byte = 0;
    while (::recv(waitFor(epoll_), &byte, 1, MSG_DONTWAIT) > 0) {
    }
}

} // namespace Benchmarks
