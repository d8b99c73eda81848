#pragma once

// The same with bare packet sockets.
namespace Benchmarks {

// How many packets of a port's small message a socket takes with the buffers that it comes with.
int messagesThatWaitInSocket();

// A connection to what kRaw serves in this process's scratch folder.
class SocketWatch {
  public:
    SocketWatch();
    ~SocketWatch();
    SocketWatch(const SocketWatch&) = delete;
    SocketWatch& operator=(const SocketWatch&) = delete;

    void awaitDeath();

  private:
    int socket_;
    int epoll_;
};

} // namespace Benchmarks
