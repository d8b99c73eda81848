#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

// Ways of one small message, an action of 10 bytes and an archive of 250, to another process.
//
// Each is a pair: the sender, which asks for an answer with each so manieth message, and the other
// side, which checks what it gets, counts, and answers with such a message.
namespace Benchmarks {

inline constexpr std::size_t kActionLength = 10;
inline constexpr std::size_t kArchiveLength = 250;

class Transport {
  public:
    virtual ~Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    virtual void post() = 0;
    // Returns when the answer to the last batch is there.
    virtual void awaitAnswer() = 0;

  protected:
    Transport() = default;
};

struct TransportKind {
    const char* name;
    // In the folder of both sides, once the other side is ready.
    std::unique_ptr<Transport> (*connect)(const std::filesystem::path& folder);
    // Says that it is ready, and answers each batch until it is killed.
    void (*serve)(const std::filesystem::path& folder, std::size_t batch);
};

// A packet socket and epoll, with one buffer of the bytes that a port sends: one system call to
// send, one to wait and one to receive for each message.
extern const TransportKind kRaw;
// A port, with components that are there.
extern const TransportKind kPort;
// The link's client and a handler: archives a path and restores it.
extern const TransportKind kLink;
// A method call without reply by way of the bus daemon.
extern const TransportKind kBus;
// A pair of ZeroMQ sockets over the same kind of socket.
extern const TransportKind kZeroMQ;

} // namespace Benchmarks
