#include "Benchmarks/linux/RawBroadcast.h"

#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/Transport.h"
#include "Benchmarks/linux/RawSocket.h"

#include <array>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Benchmarks {

namespace {

void serveRawClients(const std::filesystem::path& folder, std::size_t count) {
    allowManyDescriptors();
    const int epoll = makeEpoll();
    for (std::size_t i = 0; i < count; ++i) {
        watch(epoll, connectTo(folder / "raw"));
    }
    Peer::sayReady();
    while (Peer::awaitOrder()) {
        std::array<std::byte, 4096> buffer;
        for (std::size_t i = 0; i < count * kBroadcastsAtOnce; ++i) {
            if (::recv(waitFor(epoll), buffer.data(), buffer.size(), MSG_DONTWAIT) !=
                static_cast<ssize_t>(kRawLength)) {
                failSystem("recv");
            }
        }
        Peer::sayReady();
    }
}

} // namespace

RawSender::RawSender() : listener_(listenAt(std::filesystem::path(std::getenv("HOME")) / "raw")) {}

RawSender::~RawSender() {
    for (const int client : clients_) {
        (void)::close(client);
    }
    (void)::close(listener_);
}

void RawSender::awaitClients(std::size_t count) {
    while (clients_.size() < count) {
        clients_.push_back(acceptFrom(listener_));
        raiseSendBuffer(clients_.back());
    }
}

void RawSender::broadcast() {
    static const std::array<std::byte, kRawLength> message{};
    for (const int client : clients_) {
        if (::send(client, message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL) !=
            static_cast<ssize_t>(message.size())) {
            failSystem("send");
        }
    }
}

void allowManyDescriptors() {
    rlimit limit{};
    (void)::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    (void)::setrlimit(RLIMIT_NOFILE, &limit); // too few show where one is missing
}

const TransportKind kRawClients{"raw-clients", nullptr, &serveRawClients};

} // namespace Benchmarks
