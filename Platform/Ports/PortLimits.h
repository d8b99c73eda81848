#pragma once

#include <cstddef>
#include <cstdint>

// What a message may be at most. A sender is refused, a peer that goes beyond is cut off.
namespace NS::PortLimits {

// A message of 256 MiB must pass; more in one piece would rather be a file.
inline constexpr std::uint64_t kComponent = std::uint64_t{256} << 20U;
// All components of one message with their table of lengths: the largest component and company.
inline constexpr std::uint64_t kBody = std::uint64_t{320} << 20U;
// Each costs an object at the receiver before anyone looks at the message.
inline constexpr std::uint32_t kComponents = 1U << 16U;
// Below it a message is copied through the kernel; above it a memory file is cheaper and does not
// need one piece of buffer space as large as the message.
inline constexpr std::size_t kInlineBody = std::size_t{128} << 10U;
// How many components one system call can gather (the kernel's own limit is 1024 pieces); more go
// through a memory file.
inline constexpr std::size_t kInlineComponents = 512;
// What may wait in memory files for one receiver: the kernel counts only their descriptors, so that
// a receiver that stands still would let them fill the machine. Room for three of the largest.
inline constexpr std::uint64_t kWaitingInFiles = 3 * kBody;
// Asked of the kernel for each connection; it cuts that to its own limit, then doubles it. A small
// message takes 1.3 KiB of it, and 256 of them must wait for a receiver that is not running its
// loop: the usual limit of 208 KiB gives 330, this gives 1,600 and no more than 2 MiB of the
// kernel's memory.
inline constexpr int kSendBuffer = 1 << 20;
// Peers at once on one port; each holds a descriptor.
inline constexpr std::size_t kConnections = 4096;
// Messages taken from one peer before the others have their turn.
inline constexpr int kMessagesPerTurn = 16;
// A port's name in bytes of UTF-8: it is a file's name, and those end at 255.
inline constexpr std::size_t kName = 200;

} // namespace NS::PortLimits
