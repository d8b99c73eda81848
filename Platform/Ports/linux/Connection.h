#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Ports/MachPort.h"
#include "Platform/Ports/RunLoopSource.h"
#include "Platform/Ports/linux/Frame.h"
#include "Platform/Ports/linux/PortIdentity.h"
#include "Platform/Ports/linux/RuntimeFolder.h"
#include "Platform/Ports/linux/Turns.h"

#include <optional>
#include <string_view>
#include <sys/types.h>
#include <utility>

namespace NS {

class LocalEndpoint;

// A connection between a port of this process and one port of a peer. What the peer sends arrives
// at the port; what is sent to the peer's port goes back on it.
class Connection final : public RunLoopSource {
    NS_OBJECT(Connection)
  public:
    // Connects to a port's socket in the folder. Nil when nobody listens there, or another user.
    static RefPtr<Connection> connectTo(const RuntimeFolder& folder, std::string_view socketName,
                                        const PortIdentity& peerPort);
    // Takes over a connected socket from a peer. Nil when that is another user's process.
    static RefPtr<Connection> fromPeer(FileDescriptor socket);
    // The two ends of a connection between ports of this process; the first leads to that port.
    static std::optional<std::pair<Ref<Connection>, Ref<Connection>>>
    pair(const PortIdentity& peerPort);
    // Opens one more connection to the port that this one leads to. Nil when that is not possible
    // at once.
    RefPtr<Connection> openFurther();

    // Where what arrives is delivered; null before a port is bound to it and after that is gone.
    LocalEndpoint* receiver() const noexcept { return receiver_; }
    void setReceiver(LocalEndpoint* receiver) noexcept { receiver_ = receiver; }

    // False, with the reason noted, when the message was not queued.
    bool send(const Array& components, const PortIdentity& replyPort);
    // True while the peer's end is open. Asks the kernel.
    bool isOpen() const noexcept;
    // The process that made the peer's end.
    pid_t peerProcess() const noexcept { return peerProcess_; }
    // The port at the peer's end, by its own account; none before that is known.
    const PortIdentity& peerPort() const noexcept { return peerPort_; }
    // Ends it; what has not been received is lost.
    void close();

    int descriptor() const noexcept override { return socket_.get(); }
    void ready() override;

    // For make(): a socket whose peer has been checked.
    Connection(FileDescriptor socket, pid_t peerProcess, const PortIdentity& peerPort) noexcept;

  private:
    // Takes one packet in; false when there is none to go on with.
    bool receiveOne();
    // Each does what a packet asks for; false when none can follow it.
    bool handle(Received received);
    bool handle(ReceiveState state);
    bool take(Frame frame);
    // A further connection to the same port.
    bool adopt(FileDescriptor socket);
    bool cutOff(PortDrop reason);
    RefPtr<MachPort> replyPort();

    FileDescriptor socket_;
    pid_t peerProcess_;
    PortIdentity peerPort_;
    LocalEndpoint* receiver_ = nullptr;
    Turns turns_;
    Announced announced_ = Announced::kNo;
    // The peer's port, once a message named it; refers back to this connection until it is closed.
    RefPtr<MachPort> replyPort_;
    WaitingFiles waiting_;
};

// Replaces the user whose processes are let in, for tests of those who are not; back to this
// process's own with the second.
void setExpectedPeerUser(uid_t user) noexcept;
void resetExpectedPeerUser() noexcept;

} // namespace NS
