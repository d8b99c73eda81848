#include "Platform/Foundation/Data.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Frame.h"
#include "Platform/Ports/linux/MemoryFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <vector>

namespace NS {

namespace {

// A packet as it came in; its bytes are in the packet buffer.
struct Packet {
    std::size_t length = 0;
    bool cut = false;        // longer than any packet may be
    bool rightsLost = false; // descriptors came that were not taken
    std::size_t fileCount = 0;
    FileDescriptor file; // the first of them
};

constexpr std::size_t kPacketLimit = sizeof(FrameHeader) + PortLimits::kInlineBody;

// One buffer a thread, so that a message is copied once: into its components.
std::byte* packetBuffer() {
    static thread_local const auto buffer =
        std::make_unique_for_overwrite<std::byte[]>(kPacketLimit);
    return buffer.get();
}

// Every descriptor that came is owned at once, so that none leaks whatever the packet turns out to
// be.
void takeDescriptors(msghdr& message, Packet& packet) {
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr;
         part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS) {
            continue;
        }
        const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(part) + i * sizeof descriptor, sizeof descriptor);
            FileDescriptor taken(descriptor);
            if (packet.fileCount++ == 0) {
                packet.file = std::move(taken);
            }
        }
    }
}

// Calls what receives again, when the error is not about a packet: that which a peer leaves behind
// when it dies with unread messages of ours stands before what it sent, which is still there.
template <class Receive>
ssize_t receiveBehindError(Receive&& receive) {
    for (;;) {
        const ssize_t received = receive();
        if (received >= 0 || (errno != EINTR && errno != ECONNRESET)) {
            return received;
        }
    }
}

// Nothing when there is no packet now; a length of 0 at the end of the connection.
std::optional<Packet> packetOf(ssize_t received) {
    std::optional<Packet> packet(std::in_place);
    if (received < 0) {
        // Any other error than "not now" is the end of the connection.
        return errno == EAGAIN ? std::nullopt : std::move(packet);
    }
    packet->length = static_cast<std::size_t>(received);
    packet->cut = packet->length > kPacketLimit;
    return packet;
}

std::optional<Packet> receivePlainPacket(int socket) {
    return packetOf(receiveBehindError(
        [&] { return ::recv(socket, packetBuffer(), kPacketLimit, MSG_DONTWAIT | MSG_TRUNC); }));
}

std::optional<Packet> receiveAnnouncedPacket(int socket) {
    // Room for one descriptor more than any packet has.
    alignas(cmsghdr) std::array<char, CMSG_SPACE(2 * sizeof(int))> control;
    iovec buffer{packetBuffer(), kPacketLimit};
    msghdr message{};
    message.msg_iov = &buffer;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t received = receiveBehindError(
        [&] { return ::recvmsg(socket, &message, MSG_DONTWAIT | MSG_TRUNC | MSG_CMSG_CLOEXEC); });
    std::optional<Packet> packet = packetOf(received);
    if (received >= 0) {
        packet->rightsLost = (message.msg_flags & MSG_CTRUNC) != 0;
        takeDescriptors(message, *packet);
    }
    return packet;
}

// An empty packet looks like the end, but its sender is still there.
bool isHungUp(int socket) noexcept {
    pollfd state{socket, 0, 0};
    return ::poll(&state, 1, 0) != 0;
}

bool isHeaderSound(const FrameHeader& header) noexcept {
    const std::uint64_t table = std::uint64_t{header.componentCount} * sizeof(std::uint64_t);
    const bool message = header.flags == 0 || header.flags == kFrameInMemoryFile;
    const bool other =
        (header.flags == kFrameWithConnection || header.flags == kFrameAnnouncement) &&
        header.replyPort.isNone() && header.componentCount == 0 && header.bodyLength == 0;
    return header.magic == kFrameMagic && header.reserved == 0 && (message || other) &&
           header.componentCount <= PortLimits::kComponents &&
           header.bodyLength <= PortLimits::kBody && header.bodyLength >= table;
}

// The components of a body whose table of lengths adds up to it exactly. They are copies, or parts
// of `whole` where that keeps the body in place.
RefPtr<Array> componentsOf(Bytes body, std::uint32_t count, const RefPtr<Data>& whole) {
    const Bytes table = body.first(count * sizeof(std::uint64_t));
    Bytes rest = body.subspan(table.size());
    std::vector<Ref<Object>> components;
    components.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint64_t length = 0;
        std::memcpy(&length, table.data() + i * sizeof length, sizeof length);
        if (length > rest.size() || length > PortLimits::kComponent) {
            return nullptr;
        }
        const Bytes bytes = rest.first(static_cast<std::size_t>(length));
        components.push_back(whole ? Data::dataWithBytesNoCopy(bytes, Ref<Object>(*whole))
                                   : Data::dataWithBytes(bytes));
        rest = rest.subspan(bytes.size());
    }
    return rest.empty() ? RefPtr<Array>(make<Array>(std::move(components))) : nullptr;
}

Received messageOf(const FrameHeader& header, Bytes body, const RefPtr<Data>& whole) {
    const RefPtr<Array> components = componentsOf(body, header.componentCount, whole);
    if (!components) {
        return PortDrop::kMalformedFrame;
    }
    return Frame{header.replyPort, Ref<Array>(*components)};
}

Received messageInFile(const FrameHeader& header, const FileDescriptor& file) {
    if (!isSealedMemoryFile(file, header.bodyLength)) {
        return PortDrop::kBadMemoryFile;
    }
    const RefPtr<Data> whole = mapMemoryFile(file, header.bodyLength);
    if (!whole) {
        return ReceiveState::kLost;
    }
    return messageOf(header, whole->bytes(), whole);
}

// A packet whose header is sound.
Received unpacked(Packet packet, const FrameHeader& header) {
    const Bytes body(packetBuffer() + sizeof header, packet.length - sizeof header);
    const bool alone = header.flags == 0 || header.flags == kFrameAnnouncement;
    if (body.size() != (alone ? header.bodyLength : 0)) {
        return PortDrop::kMalformedFrame;
    }
    // A table of descriptors that is full takes none of those that came.
    if (!alone && packet.rightsLost && packet.fileCount == 0) {
        return ReceiveState::kLost;
    }
    if (packet.rightsLost || packet.fileCount != (alone ? 0U : 1U)) {
        return PortDrop::kMalformedFrame;
    }
    if (header.flags == kFrameWithConnection) {
        return std::move(packet.file);
    }
    if (header.flags == kFrameAnnouncement) {
        return ReceiveState::kAnnounced;
    }
    return alone ? messageOf(header, body, nullptr) : messageInFile(header, packet.file);
}

} // namespace

Received receiveFrame(int socket, Announced announced) {
    std::optional<Packet> packet =
        announced == Announced::kYes ? receiveAnnouncedPacket(socket) : receivePlainPacket(socket);
    if (!packet) {
        return ReceiveState::kNothing;
    }
    if (packet->length == 0 && isHungUp(socket)) {
        return ReceiveState::kEnd;
    }
    FrameHeader header{};
    if (packet->cut || packet->length < sizeof header) {
        return PortDrop::kMalformedFrame;
    }
    std::memcpy(&header, packetBuffer(), sizeof header);
    if (!isHeaderSound(header)) {
        return PortDrop::kMalformedFrame;
    }
    return unpacked(std::move(*packet), header);
}

} // namespace NS
