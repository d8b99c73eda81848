#pragma once

#include "Platform/Ports/MachPort.h"
#include "Platform/Ports/RunLoopSource.h"
#include "Platform/Ports/linux/FileDescriptor.h"
#include "Platform/Ports/linux/PortIdentity.h"
#include "Platform/Ports/linux/RuntimeFolder.h"

#include <string_view>

#include <sys/types.h>

namespace NS {

class LocalEndpoint;

// A connection between a port of this process and one peer. What the peer sends arrives at the
// port; what is sent to the peer's port goes back on it.
class Connection final : public RunLoopSource {
    NS_OBJECT(Connection)
  public:
    // Connects to a socket of the folder. Nil when nobody listens there or it is another user's.
    static RefPtr<Connection> connectTo(const RuntimeFolder& folder, std::string_view socketName);
    // Takes over a connected socket. Nil when its peer is another user's process.
    static RefPtr<Connection> fromSocket(FileDescriptor socket);
    ~Connection() override;

    // Where what arrives is delivered; null before a port is bound to it and after that is gone.
    LocalEndpoint* receiver() const noexcept { return receiver_; }
    void setReceiver(LocalEndpoint* receiver) noexcept { receiver_ = receiver; }

    // False, with the reason noted, when the message was not queued.
    bool send(const Array& components, const PortIdentity& replyPort);
    // True while the peer's end is open. Asks the kernel.
    bool isOpen() const;
    pid_t peerProcess() const noexcept { return peerProcess_; }
    // Ends it; what has not been received is lost.
    void close();

    int descriptor() const noexcept override { return socket_.get(); }
    void ready() override;

    // For make(): a socket whose peer has been checked.
    Connection(FileDescriptor socket, pid_t peerProcess) noexcept;

  private:
    // Takes one message in; false when there is none to go on with.
    bool receiveOne();
    void deliver(const PortIdentity& replyPort, const Ref<Array>& components);
    RefPtr<MachPort> replyPortFor(const PortIdentity& identity);

    FileDescriptor socket_;
    pid_t peerProcess_;
    LocalEndpoint* receiver_ = nullptr;
    // The peer's port, once a message named it; refers back to this connection until it is closed.
    RefPtr<MachPort> replyPort_;
};

// Replaces the user whose processes are let in, for tests of those who are not.
void setExpectedPeerUser(uid_t user) noexcept;

} // namespace NS
