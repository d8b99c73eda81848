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
// Below it a message is copied through the kernel; above it a memory file is cheaper and, unlike a
// packet of that size, never waits for buffer space in pieces.
inline constexpr std::size_t kInlineBody = std::size_t{128} << 10U;
// How many pieces one system call can gather; more go through a memory file.
inline constexpr std::size_t kInlineComponents = 512;
// Peers at once on one port; each holds a descriptor.
inline constexpr std::size_t kConnections = 4096;
// Messages taken from one peer before the others have their turn.
inline constexpr int kMessagesPerTurn = 16;
// A port's name in bytes of UTF-8: it is a file's name.
inline constexpr std::size_t kName = 200;

} // namespace NS::PortLimits
