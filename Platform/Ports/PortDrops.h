#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace NS {

// Why the ports layer gave something up without telling anyone else.
enum class PortDrop : std::uint8_t {
    kQueueFull,      // a message was not sent: the receiver's queue has no room
    kDeadPeer,       // a message was not sent: nobody is there to receive it
    kTooLarge,       // a message was not sent: it is beyond PortLimits
    kNoReplyRoute,   // a message was not sent: it cannot be answered where it asks to be
    kNoDelegate,     // a message was received for a port that nobody listens to
    kNoRoom,         // a message was received, but this process has no room for its memory file
    kTooManyPeers,   // a connection was refused: the port, or the process, has too many
    kForeignUser,    // a connection was refused: the peer is another user's process
    kMalformedFrame, // a peer was cut off: what it sent is no frame
    kBadMemoryFile,  // a peer was cut off: its memory file is not sealed or not as long as told
};
inline constexpr std::size_t kPortDropReasons = 10;

// How often something was given up for a reason since the process began. Any thread.
std::uint64_t portDropCount(PortDrop reason) noexcept;

// Calls an observer for each drop, in place of the one before; an empty one for none. It runs on
// the thread that drops and must not raise. For tests and diagnosis; set it before other threads
// use ports.
void setPortDropObserver(std::function<void(PortDrop)> observer);

// Counts a drop and tells the observer.
void notePortDrop(PortDrop reason);

} // namespace NS
