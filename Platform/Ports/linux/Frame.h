#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/linux/PortIdentity.h"

#include <cstdint>
#include <optional>
#include <variant>

// Messages as packets of a SOCK_SEQPACKET connection; Docs/port-frames.md has the layout.
namespace NS {

// Begins every packet. Numbers lie as the machine has them: both ends are on one.
struct FrameHeader {
    std::uint32_t magic;
    std::uint32_t flags;
    PortIdentity replyPort;
    std::uint32_t componentCount;
    std::uint32_t reserved;
    std::uint64_t bodyLength;
};
static_assert(sizeof(FrameHeader) == 40, "the header is laid out without gaps");

// "QVP2": the kind of packet and the version of its layout.
inline constexpr std::uint32_t kFrameMagic = 0x32505651;
// The body does not follow the header but is the content of a memory file sent along.
inline constexpr std::uint32_t kFrameInMemoryFile = 1;
// No message: a further connection to the same port is sent along.
inline constexpr std::uint32_t kFrameWithConnection = 2;
// No message: the next packet is the one that a descriptor is sent along with. A packet that is not
// announced so is received without room for any, which is quicker; the kernel closes what it
// brings.
inline constexpr std::uint32_t kFrameAnnouncement = 4;

// What waits in a connection's memory files at most, as its sender knows it.
class WaitingFiles {
  public:
    // True when there is room for so much more, behind what the socket still holds.
    bool hasRoomFor(int socket, std::uint64_t length) noexcept;
    void add(std::uint64_t length) noexcept { length_ += length; }

  private:
    std::uint64_t length_ = 0;
};

// Queues a message as one packet, or says why not. One that goes in a memory file is two packets,
// the announcement and its own, and so not queued in one step: the first may find room where the
// second does not. The message is lost then as any other that finds none, and an announcement whose
// packet is not queued does no harm. Components are Data objects; anything else raises
// NSInvalidArgumentException.
std::optional<PortDrop> sendFrame(int socket, const Array& components,
                                  const PortIdentity& replyPort, WaitingFiles& waiting);
// Queues one end of a further connection, in two packets as well, or says why not.
std::optional<PortDrop> sendConnectionFrame(int socket, const FileDescriptor& end);

// A message taken apart.
struct Frame {
    PortIdentity replyPort;
    Ref<Array> components;
};

enum class ReceiveState : std::uint8_t {
    kNothing,   // there is nothing now
    kEnd,       // the peer is gone and everything that it sent has been received
    kLost,      // a message was taken, but this process had no room for what came with it
    kAnnounced, // the next packet is to be taken as an announced one
};

// A message, a further connection, a state, or why the peer must be cut off.
using Received = std::variant<Frame, FileDescriptor, ReceiveState, PortDrop>;

// What the packet before told of the next one.
enum class Announced : bool { kNo, kYes };

// Takes the next packet. Never waits.
Received receiveFrame(int socket, Announced announced);

} // namespace NS
