#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/Transport.h"

#include <array>
#include <stdexcept>
#include <string>
#include <zmq.h>

namespace Benchmarks {

namespace {

void require(bool condition) {
    if (!condition) {
        throw std::runtime_error(::zmq_strerror(::zmq_errno()));
    }
}

// One of a pair of sockets, with a thread of the library's behind it.
class ZeroMQTransport final : public Transport {
  public:
    using Join = int(void* socket, const char* address);

    ZeroMQTransport(const std::filesystem::path& folder, Join* join) {
        const std::string address = "ipc://" + (folder / "zeromq").string();
        require(socket_ != nullptr && join(socket_, address.c_str()) == 0);
    }
    ~ZeroMQTransport() override {
        constexpr int kNow = 0;
        (void)::zmq_setsockopt(socket_, ZMQ_LINGER, &kNow, sizeof kNow);
        (void)::zmq_close(socket_);
        (void)::zmq_ctx_term(context_);
    }

    void post() override {
        require(::zmq_send(socket_, archive_.data(), kActionLength, ZMQ_SNDMORE) >= 0);
        require(::zmq_send(socket_, archive_.data(), kArchiveLength, 0) >= 0);
    }

    void awaitAnswer() override {
        std::array<std::byte, 4096> buffer;
        require(::zmq_recv(socket_, buffer.data(), buffer.size(), 0) == int{kActionLength});
        require(::zmq_recv(socket_, buffer.data(), buffer.size(), 0) == int{kArchiveLength});
    }

  private:
    void* context_ = ::zmq_ctx_new();
    void* socket_ = ::zmq_socket(context_, ZMQ_PAIR);
    std::array<std::byte, kArchiveLength> archive_{};
};

std::unique_ptr<Transport> connectZeroMQ(const std::filesystem::path& folder, std::size_t) {
    return std::make_unique<ZeroMQTransport>(folder, &::zmq_connect);
}

void serveZeroMQ(const std::filesystem::path& folder, std::size_t batch) {
    ZeroMQTransport transport(folder, &::zmq_bind);
    Peer::sayReady();
    for (;;) {
        for (std::size_t i = 0; i < batch; ++i) {
            transport.awaitAnswer();
        }
        transport.post();
    }
}

} // namespace

const TransportKind kZeroMQ{"zeromq", &connectZeroMQ, &serveZeroMQ};

} // namespace Benchmarks
