#include "Platform/Foundation/Data.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/linux/Frame.h"
#include "Platform/Ports/linux/MemoryFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <linux/sockios.h>
#include <memory_resource>
#include <span>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <vector>

namespace NS {

namespace {

// A packet up to this length is put together here: to gather pieces, the kernel takes longer than
// it takes to copy so few bytes.
constexpr std::size_t kCopiedPacket = 4096;

iovec piece(const void* bytes, std::size_t length) noexcept {
    return {const_cast<void*>(bytes), length};
}

FrameHeader headerOf(std::uint32_t flags) noexcept {
    return {kFrameMagic, flags, {}, 0, 0, 0};
}

Bytes bytesOf(const FrameHeader& header) noexcept {
    return std::as_bytes(std::span(&header, 1));
}

// A component's bytes, where they are.
Bytes bytesOf(const Ref<Object>& component) {
    const auto* const data = as<Data>(component.get());
    if (data == nullptr) {
        raiseUnrecognizedSelector(*component, Data::kClass);
    }
    return data->bytes();
}

// Each gives 0, or the system's error.
template <class Send>
int sendUninterrupted(Send&& send) noexcept {
    ssize_t sent = 0;
    do {
        sent = send();
    } while (sent < 0 && errno == EINTR);
    return sent < 0 ? errno : 0;
}

int sendPacket(int socket, Bytes packet) noexcept {
    return sendUninterrupted(
        [&] { return ::send(socket, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL); });
}

int sendPacket(int socket, std::span<const iovec> pieces) noexcept {
    msghdr message{};
    message.msg_iov = const_cast<iovec*>(pieces.data());
    message.msg_iovlen = pieces.size();
    return sendUninterrupted(
        [&] { return ::sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL); });
}

// A header with a file, after the packet that announces it.
int sendWithFile(int socket, const FrameHeader& header, const FileDescriptor& file) noexcept {
    if (const int error = sendPacket(socket, bytesOf(headerOf(kFrameAnnouncement))); error != 0) {
        return error;
    }
    const int descriptor = file.get();
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptor)> control{};
    iovec piece{const_cast<FrameHeader*>(&header), sizeof header};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* const rights = CMSG_FIRSTHDR(&message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(rights), &descriptor, sizeof descriptor);
    return sendUninterrupted(
        [&] { return ::sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL); });
}

std::optional<PortDrop> dropFor(int error) noexcept {
    if (error == 0) {
        return std::nullopt;
    }
    const bool dead = error == EPIPE || error == ECONNRESET || error == ENOTCONN;
    return dead ? PortDrop::kDeadPeer : PortDrop::kQueueFull;
}

// A message put together in a buffer: the packet, or nothing when it does not fit.
Bytes copiedPacket(std::span<std::byte> buffer, const Array& components,
                   const PortIdentity& replyPort) {
    const std::size_t count = components.count();
    if (count > (buffer.size() - sizeof(FrameHeader)) / sizeof(std::uint64_t)) {
        return {};
    }
    std::byte* table = buffer.data() + sizeof(FrameHeader);
    std::span<std::byte> rest = buffer.subspan(sizeof(FrameHeader) + count * sizeof(std::uint64_t));
    for (const Ref<Object>& component : components) {
        const Bytes bytes = bytesOf(component);
        if (bytes.size() > rest.size()) {
            return {};
        }
        const std::uint64_t length = bytes.size();
        std::memcpy(table, &length, sizeof length);
        table += sizeof length;
        if (!bytes.empty()) {
            std::memcpy(rest.data(), bytes.data(), bytes.size());
        }
        rest = rest.subspan(bytes.size());
    }
    FrameHeader header = headerOf(0);
    header.replyPort = replyPort;
    header.componentCount = static_cast<std::uint32_t>(count);
    header.bodyLength = buffer.size() - rest.size() - sizeof header;
    std::memcpy(buffer.data(), &header, sizeof header);
    return buffer.first(buffer.size() - rest.size());
}

// One message on its way out: its header, and the pieces of its body where they are.
class OutgoingFrame {
  public:
    OutgoingFrame(const Array& components, const PortIdentity& replyPort) : header_(headerOf(0)) {
        header_.replyPort = replyPort;
        header_.componentCount = static_cast<std::uint32_t>(components.count());
        lengths_.reserve(components.count());
        pieces_.reserve(components.count() + 2);
        pieces_.push_back(piece(&header_, sizeof header_));
        pieces_.push_back({});
        for (const Ref<Object>& component : components) {
            add(bytesOf(component));
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

    std::optional<PortDrop> send(int socket, WaitingFiles& waiting) {
        if (header_.bodyLength <= PortLimits::kInlineBody &&
            lengths_.size() <= PortLimits::kInlineComponents) {
            const int error = sendPacket(socket, std::span<const iovec>(pieces_));
            // A machine can be set up to give less buffer than such a packet takes.
            if (error != EMSGSIZE) {
                return dropFor(error);
            }
        }
        return sendInFile(socket, waiting);
    }

  private:
    void add(Bytes bytes) {
        tooLarge_ = tooLarge_ || bytes.size() > PortLimits::kComponent;
        lengths_.push_back(bytes.size());
        pieces_.push_back(piece(bytes.data(), bytes.size()));
        header_.bodyLength += bytes.size();
    }

    std::optional<PortDrop> sendInFile(int socket, WaitingFiles& waiting) {
        if (!waiting.hasRoomFor(socket, header_.bodyLength)) {
            return PortDrop::kQueueFull;
        }
        const std::span<const iovec> all(pieces_);
        const FileDescriptor file = makeMemoryFile(all.subspan(1));
        if (!file) {
            return PortDrop::kQueueFull; // no memory, or no descriptor, for it now
        }
        header_.flags = kFrameInMemoryFile;
        const int error = sendWithFile(socket, header_, file);
        if (error == 0) {
            waiting.add(header_.bodyLength);
        }
        return dropFor(error);
    }

    // Enough for a message of the usual few components without asking the heap.
    std::array<std::byte, 1024> storage_;
    std::pmr::monotonic_buffer_resource memory_{storage_.data(), storage_.size()};
    FrameHeader header_;
    std::pmr::vector<std::uint64_t> lengths_{&memory_};
    std::pmr::vector<iovec> pieces_{&memory_};
    bool tooLarge_ = false;
};

} // namespace

bool WaitingFiles::hasRoomFor(int socket, std::uint64_t length) noexcept {
    int unread = 0;
    if (length_ != 0 && ::ioctl(socket, SIOCOUTQ, &unread) == 0 && unread == 0) {
        length_ = 0;
    }
    return length_ + length <= PortLimits::kWaitingInFiles;
}

std::optional<PortDrop> sendFrame(int socket, const Array& components,
                                  const PortIdentity& replyPort, WaitingFiles& waiting) {
    std::array<std::byte, kCopiedPacket> buffer;
    if (const Bytes packet = copiedPacket(buffer, components, replyPort); !packet.empty()) {
        const int error = sendPacket(socket, packet);
        if (error != EMSGSIZE) {
            return dropFor(error);
        }
    }
    OutgoingFrame frame(components, replyPort);
    return frame.isTooLarge() ? PortDrop::kTooLarge : frame.send(socket, waiting);
}

std::optional<PortDrop> sendConnectionFrame(int socket, const FileDescriptor& end) {
    return dropFor(sendWithFile(socket, headerOf(kFrameWithConnection), end));
}

} // namespace NS
