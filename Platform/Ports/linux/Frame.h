#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/linux/FileDescriptor.h"
#include "Platform/Ports/linux/PortIdentity.h"

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

// Messages as packets of a SOCK_SEQPACKET connection; Docs/port-frames.md has the layout.
namespace NS {

struct FrameHeader {
    std::uint32_t magic;
    std::uint32_t flags;
    PortIdentity replyPort;
    std::uint32_t componentCount;
    std::uint32_t reserved;
    std::uint64_t bodyLength;
};
static_assert(sizeof(FrameHeader) == 40, "the header is laid out without gaps");

inline constexpr std::uint32_t kFrameMagic = 0x31505651; // "QVP1", lowest byte first
// The body does not follow the header but is the content of a memory file sent along.
inline constexpr std::uint32_t kFrameInMemoryFile = 1;

// A message taken apart.
struct Frame {
    PortIdentity replyPort;
    Ref<Array> components;
};

// Queues a message as one packet, or says why not. Components are Data objects; anything else
// raises NSInvalidArgumentException.
std::optional<PortDrop> sendFrame(int socket, const Array& components,
                                  const PortIdentity& replyPort);

// Nothing to receive now; the peer is gone and everything it sent has been received; the
// descriptors that came with a packet could not be taken, so that its message is lost.
enum class ReceiveState : std::uint8_t { kNothing, kEnd, kLost };

// Takes the next message, a state, or why the peer must be cut off.
std::variant<Frame, ReceiveState, PortDrop> receiveFrame(int socket);

} // namespace NS
