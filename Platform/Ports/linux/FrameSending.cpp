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

constexpr int kNoFile = -1;

iovec piece(const void* bytes, std::size_t length) noexcept {
    return {const_cast<void*>(bytes), length};
}

FrameHeader headerOf(std::uint32_t flags) noexcept {
    return {kFrameMagic, flags, {}, 0, 0, 0};
}

// 0, or the system's error.
int sendPacket(int socket, std::span<const iovec> pieces, int file) {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = const_cast<iovec*>(pieces.data());
    message.msg_iovlen = pieces.size();
    if (file != kNoFile) {
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
    return sent < 0 ? errno : 0;
}

std::optional<PortDrop> dropFor(int error) noexcept {
    if (error == 0) {
        return std::nullopt;
    }
    const bool dead = error == EPIPE || error == ECONNRESET || error == ENOTCONN;
    return dead ? PortDrop::kDeadPeer : PortDrop::kQueueFull;
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

    std::optional<PortDrop> send(int socket, WaitingFiles& waiting) {
        if (header_.bodyLength <= PortLimits::kInlineBody &&
            lengths_.size() <= PortLimits::kInlineComponents) {
            const int error = sendPacket(socket, pieces_, kNoFile);
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
        const int error = sendPacket(socket, all.first(1), file.get());
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
    OutgoingFrame frame(components, replyPort);
    return frame.isTooLarge() ? PortDrop::kTooLarge : frame.send(socket, waiting);
}

std::optional<PortDrop> sendConnectionFrame(int socket, const FileDescriptor& end) {
    const FrameHeader header = headerOf(kFrameWithConnection);
    const iovec only = piece(&header, sizeof header);
    return dropFor(sendPacket(socket, {&only, 1}, end.get()));
}

} // namespace NS
