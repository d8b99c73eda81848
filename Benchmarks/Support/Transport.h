#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

// Ways of a message to another process.
//
// Each is a pair: the sender, and the other side, which checks what it gets, counts, and answers
// each so manieth message.
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
    // In the folder of both sides, once the other side is ready, and with the same number.
    std::unique_ptr<Transport> (*connect)(const std::filesystem::path& folder, std::size_t number);
    // Says that it is ready, and serves until it is killed.
    void (*serve)(const std::filesystem::path& folder, std::size_t number);
};

// One small message, an action of 10 bytes and an archive of 250; as many as the number says have
// one answer, which is such a message.

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

// One message with a payload of as many bytes as the number says, all of whose pages the other side
// reads before it answers.

// A memory file, written, sealed, sent along with a packet, checked, mapped.
extern const TransportKind kRawFile;
extern const TransportKind kPortPayload;

// As many clients of a server as the number says, without a connect(): each order has them take in
// what so many broadcasts brought.
inline constexpr int kBroadcastsAtOnce = 16;

extern const TransportKind kPortClients;
extern const TransportKind kRawClients;

} // namespace Benchmarks
