#include "Platform/Ports/linux/Frame.h"

#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/MemoryFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <sys/socket.h>
#include <sys/uio.h>

namespace NS {

namespace {

using Lengths = std::vector<std::uint64_t>;

iovec piece(const void* bytes, std::size_t length) noexcept {
    return {const_cast<void*>(bytes), length};
}

// One message on its way out: its header and the pieces of its body, in place.
class OutgoingFrame {
  public:
    OutgoingFrame(const Array& components, const PortIdentity& replyPort)
        : header_{kFrameMagic, 0, replyPort, static_cast<std::uint32_t>(components.count()), 0, 0} {
        lengths_.reserve(components.count());
        pieces_.reserve(components.count() + 2);
        pieces_.push_back(piece(&header_, sizeof header_));
        pieces_.push_back({});
        for (const Ref<Object>& component : components) {
            add(cast<Data>(component)->bytes());
        }
        pieces_[1] = piece(lengths_.data(), lengths_.size() * sizeof(std::uint64_t));
        header_.bodyLength += pieces_[1].iov_len;
    }
    OutgoingFrame(const OutgoingFrame&) = delete;
    OutgoingFrame& operator=(const OutgoingFrame&) = delete;

    bool isTooLarge() const noexcept {
        return tooLarge_ || lengths_.size() > PortLimits::kComponents ||
               header_.bodyLength > PortLimits::kBody;
    }

    std::optional<PortDrop> send(int socket) {
        if (header_.bodyLength <= PortLimits::kInlineBody &&
            lengths_.size() <= PortLimits::kInlineComponents) {
            return sendPacket(socket, pieces_, -1);
        }
        const std::span<const iovec> all(pieces_);
        const FileDescriptor file = makeMemoryFile(all.subspan(1));
        if (!file) {
            return PortDrop::kQueueFull; // no memory for it now
        }
        header_.flags = kFrameInMemoryFile;
        return sendPacket(socket, all.first(1), file.get());
    }

  private:
    void add(Bytes bytes) {
        tooLarge_ = tooLarge_ || bytes.size() > PortLimits::kComponent;
        lengths_.push_back(bytes.size());
        pieces_.push_back(piece(bytes.data(), bytes.size()));
        header_.bodyLength += bytes.size();
    }

    static std::optional<PortDrop> sendPacket(int socket, std::span<const iovec> pieces, int file) {
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
        msghdr message{};
        message.msg_iov = const_cast<iovec*>(pieces.data());
        message.msg_iovlen = pieces.size();
        if (file >= 0) {
            message.msg_control = control.data();
            message.msg_controllen = control.size();
            cmsghdr* const rights = CMSG_FIRSTHDR(&message);
            rights->cmsg_level = SOL_SOCKET;
            rights->cmsg_type = SCM_RIGHTS;
            rights->cmsg_len = CMSG_LEN(sizeof file);
            std::memcpy(CMSG_DATA(rights), &file, sizeof file);
        }
        ssize_t sent = 0;
        do {
            sent = ::sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
        } while (sent < 0 && errno == EINTR);
        if (sent >= 0) {
            return std::nullopt;
        }
        const bool dead = errno == EPIPE || errno == ECONNRESET || errno == ENOTCONN;
        return dead ? PortDrop::kDeadPeer : PortDrop::kQueueFull;
    }

    FrameHeader header_;
    Lengths lengths_;
    std::vector<iovec> pieces_;
    bool tooLarge_ = false;
};

// A packet as it came in.
struct Packet {
    std::size_t length = 0;
    bool cut = false;        // longer than any packet may be
    bool rightsLost = false; // descriptors came that this process has no room for
    std::vector<FileDescriptor> files;
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
            packet.files.emplace_back(descriptor);
        }
    }
    packet.rightsLost = (message.msg_flags & MSG_CTRUNC) != 0;
}

// Nothing when there is no packet now; a length of 0 at the end of the connection.
std::optional<Packet> receivePacket(int socket) {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int) * 4)> control{};
    iovec buffer = piece(packetBuffer(), kPacketLimit);
    msghdr message{};
    message.msg_iov = &buffer;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    ssize_t received = 0;
    do {
        received = ::recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    } while (received < 0 && errno == EINTR);
    Packet packet;
    if (received < 0) {
        // Any other error than "not now" is the end of the connection.
        return errno == EAGAIN ? std::nullopt : std::optional<Packet>(std::move(packet));
    }
    packet.length = static_cast<std::size_t>(received);
    packet.cut = (message.msg_flags & MSG_TRUNC) != 0;
    takeDescriptors(message, packet);
    return packet;
}

bool isHeaderSound(const FrameHeader& header) noexcept {
    const std::uint64_t table = std::uint64_t{header.componentCount} * sizeof(std::uint64_t);
    return header.magic == kFrameMagic && (header.flags & ~kFrameInMemoryFile) == 0 &&
           header.reserved == 0 && header.componentCount <= PortLimits::kComponents &&
           header.bodyLength <= PortLimits::kBody && header.bodyLength >= table;
}

// The components of a body whose table of lengths adds up to it exactly. They are copies, or parts
// of `whole` where that keeps the body in place.
RefPtr<Array> componentsOf(Bytes body, std::uint32_t count, const RefPtr<Data>& whole) {
    const std::size_t table = count * sizeof(std::uint64_t);
    Bytes rest = body.subspan(table);
    std::vector<Ref<Object>> components;
    components.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint64_t length = 0;
        std::memcpy(&length, body.data() + i * sizeof length, sizeof length);
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

std::variant<Frame, ReceiveState, PortDrop> parsed(const FrameHeader& header, Bytes body,
                                                   const RefPtr<Data>& whole) {
    const RefPtr<Array> components = componentsOf(body, header.componentCount, whole);
    if (!components) {
        return PortDrop::kMalformedFrame;
    }
    return Frame{header.replyPort, Ref<Array>(*components)};
}

} // namespace

std::optional<PortDrop> sendFrame(int socket, const Array& components,
                                  const PortIdentity& replyPort) {
    OutgoingFrame frame(components, replyPort);
    return frame.isTooLarge() ? PortDrop::kTooLarge : frame.send(socket);
}

std::variant<Frame, ReceiveState, PortDrop> receiveFrame(int socket) {
    const std::optional<Packet> packet = receivePacket(socket);
    if (!packet) {
        return ReceiveState::kNothing;
    }
    if (packet->length == 0) {
        return ReceiveState::kEnd;
    }
    FrameHeader header{};
    if (packet->cut || packet->length < sizeof header) {
        return PortDrop::kMalformedFrame;
    }
    std::memcpy(&header, packetBuffer(), sizeof header);
    const Bytes body(packetBuffer() + sizeof header, packet->length - sizeof header);
    const bool inFile = header.flags == kFrameInMemoryFile;
    if (!isHeaderSound(header) || body.size() != (inFile ? 0 : header.bodyLength)) {
        return PortDrop::kMalformedFrame;
    }
    if (packet->rightsLost) {
        return ReceiveState::kLost;
    }
    if (packet->files.size() != (inFile ? 1U : 0U)) {
        return PortDrop::kMalformedFrame;
    }
    if (!inFile) {
        return parsed(header, body, nullptr);
    }
    const RefPtr<Data> whole = mapMemoryFile(packet->files[0], header.bodyLength);
    return whole ? parsed(header, whole->bytes(), whole) : PortDrop::kBadMemoryFile;
}

} // namespace NS
