#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/Transport.h"
#include "Benchmarks/linux/RawSocket.h"

#include <array>
#include <sys/socket.h>

namespace Benchmarks {

namespace {

class RawTransport final : public Transport {
  public:
    explicit RawTransport(int socket) : socket_(socket), epoll_(makeEpoll()) {
        raiseSendBuffer(socket_);
        watch(epoll_, socket_);
        message_.fill(std::byte{'m'});
    }

    void post() override {
        if (::send(socket_, message_.data(), message_.size(), MSG_DONTWAIT | MSG_NOSIGNAL) !=
            static_cast<ssize_t>(message_.size())) {
            failSystem("send");
        }
    }

    void awaitAnswer() override { receive(); }

    void receive() {
        const int ready = waitFor(epoll_);
        if (::recv(ready, buffer_.data(), buffer_.size(), MSG_DONTWAIT) !=
                static_cast<ssize_t>(kRawLength) ||
            buffer_.front() != std::byte{'m'}) {
            failSystem("recv");
        }
    }

  private:
    int socket_;
    int epoll_;
    std::array<std::byte, kRawLength> message_{};
    std::array<std::byte, 4096> buffer_{};
};

std::unique_ptr<Transport> connectRaw(const std::filesystem::path& folder, std::size_t) {
    return std::make_unique<RawTransport>(connectTo(folder / "raw"));
}

void serveRaw(const std::filesystem::path& folder, std::size_t batch) {
    const int listener = listenAt(folder / "raw");
    Peer::sayReady();
    RawTransport transport(acceptFrom(listener));
    for (;;) {
        for (std::size_t i = 0; i < batch; ++i) {
            transport.receive();
        }
        transport.post();
    }
}

} // namespace

const TransportKind kRaw{"raw", &connectRaw, &serveRaw};

} // namespace Benchmarks
