#include "Benchmarks/Support/Pages.h"
#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/Transport.h"
#include "Benchmarks/linux/RawSocket.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Benchmarks {

namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
// As much as a port's header.
constexpr std::size_t kHeader = 40;

void require(bool condition, const char* what) {
    if (!condition) {
        failSystem(what);
    }
}

int fileWith(const std::vector<std::byte>& payload) {
    const int file = ::memfd_create("benchmark", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    require(file >= 0, "memfd_create");
    require(::write(file, payload.data(), payload.size()) == static_cast<ssize_t>(payload.size()),
            "write");
    require(::fcntl(file, F_ADD_SEALS, kSeals) == 0, "F_ADD_SEALS");
    return file;
}

// A packet with room for one descriptor.
struct Packet {
    Packet() noexcept {
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
    }

    std::array<std::byte, kHeader> header{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    iovec piece{header.data(), header.size()};
    msghdr message{};
};

void sendFile(int socket, int file) {
    Packet packet;
    cmsghdr* const rights = CMSG_FIRSTHDR(&packet.message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(rights), &file, sizeof file);
    require(::sendmsg(socket, &packet.message, MSG_DONTWAIT | MSG_NOSIGNAL) == kHeader, "sendmsg");
}

int receiveFile(int socket) {
    Packet packet;
    require(::recvmsg(socket, &packet.message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC) == kHeader,
            "recvmsg");
    const cmsghdr* const rights = CMSG_FIRSTHDR(&packet.message);
    require(rights != nullptr && rights->cmsg_type == SCM_RIGHTS, "SCM_RIGHTS");
    int file = -1;
    std::memcpy(&file, CMSG_DATA(rights), sizeof file);
    return file;
}

void readFile(int file, std::size_t length) {
    struct stat status {};
    require(::fcntl(file, F_GET_SEALS) == kSeals && ::fstat(file, &status) == 0 &&
                static_cast<std::size_t>(status.st_size) == length,
            "F_GET_SEALS");
    void* const address = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, file, 0);
    require(address != MAP_FAILED, "mmap");
    readPages({static_cast<const std::byte*>(address), length});
    (void)::munmap(address, length);
}

class RawFileTransport final : public Transport {
  public:
    RawFileTransport(int socket, std::size_t length)
        : socket_(socket), epoll_(makeEpoll()), payload_(length) {
        watch(epoll_, socket_);
        fillPages(payload_);
    }

    void post() override {
        const int file = fileWith(payload_);
        sendFile(socket_, file);
        (void)::close(file);
    }
    void awaitAnswer() override {
        char answer = 0;
        require(::recv(waitFor(epoll_), &answer, 1, 0) == 1, "recv");
    }

    void receive() {
        const int file = receiveFile(waitFor(epoll_));
        readFile(file, payload_.size());
        (void)::close(file);
    }
    void answer() { require(::send(socket_, "a", 1, MSG_NOSIGNAL) == 1, "send"); }

  private:
    int socket_;
    int epoll_;
    std::vector<std::byte> payload_;
};

std::unique_ptr<Transport> connectRawFile(const std::filesystem::path& folder, std::size_t length) {
    return std::make_unique<RawFileTransport>(connectTo(folder / "raw"), length);
}

void serveRawFile(const std::filesystem::path& folder, std::size_t length) {
    const int listener = listenAt(folder / "raw");
    Peer::sayReady();
    RawFileTransport transport(acceptFrom(listener), length);
    for (;;) {
        transport.receive();
        transport.answer();
    }
}

} // namespace

const TransportKind kRawFile{"raw-file", &connectRawFile, &serveRawFile};

} // namespace Benchmarks
