#include "Platform/Ports/linux/Frame.h"

#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/Testing/Descriptors.h"
#include "Platform/Ports/Testing/PortFixture.h"
#include "Platform/Ports/linux/RuntimeFolder.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <span>
#include <sys/mman.h>
#include <sys/socket.h>

namespace {

using Tests::TestPort;

// Talks to a port's socket byte by byte.
class Frame : public Tests::PortTest {
  protected:
    void SetUp() override { ASSERT_TRUE(registerPort(receiver, "receiver")); }

    // A connection as any process of this user could make it.
    NS::FileDescriptor connect() const {
        const std::string entry = Tests::contentsOf(folder() / "receiver");
        const auto open = NS::RuntimeFolder::open();
        NS::FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        const sockaddr_un address = open->address(entry.substr(0, 32));
        EXPECT_EQ(
            ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        return socket;
    }

    static NS::FrameHeader header(std::uint32_t count, std::uint64_t bodyLength) {
        return {NS::kFrameMagic, 0, {}, count, 0, bodyLength};
    }
    static std::string packet(const NS::FrameHeader& header,
                              const std::vector<std::uint64_t>& lengths, std::string_view bytes) {
        std::string text(reinterpret_cast<const char*>(&header), sizeof header);
        text.append(reinterpret_cast<const char*>(lengths.data()), lengths.size() * 8);
        return text.append(bytes);
    }
    // A packet that an announcement goes before, when it has a file.
    static void sendRaw(const NS::FileDescriptor& socket, std::string_view bytes, int file) {
        if (file >= 0) {
            sendRaw(socket, packet(announcement(), {}, ""));
        }
        sendRaw(socket, bytes, std::span<const int>(&file, file >= 0 ? 1 : 0));
    }
    static void sendRaw(const NS::FileDescriptor& socket, std::string_view bytes,
                        std::span<const int> files = {}) {
        alignas(cmsghdr) std::array<char, CMSG_SPACE(8 * sizeof(int))> control{};
        iovec piece{const_cast<char*>(bytes.data()), bytes.size()};
        msghdr message{};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        if (!files.empty()) {
            message.msg_control = control.data();
            message.msg_controllen = CMSG_SPACE(files.size_bytes());
            cmsghdr* const rights = CMSG_FIRSTHDR(&message);
            rights->cmsg_level = SOL_SOCKET;
            rights->cmsg_type = SCM_RIGHTS;
            rights->cmsg_len = CMSG_LEN(files.size_bytes());
            std::memcpy(CMSG_DATA(rights), files.data(), files.size_bytes());
        }
        ASSERT_EQ(::sendmsg(socket.get(), &message, MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    static bool isCutOff(const NS::FileDescriptor& socket) {
        char byte = 0;
        return ::recv(socket.get(), &byte, 1, MSG_DONTWAIT) == 0;
    }
    void expectCutOff(std::string_view bytes, NS::PortDrop reason, int file = -1) {
        const NS::FileDescriptor socket = connect();
        const auto before = NS::portDropCount(reason);
        sendRaw(socket, bytes, file);
        serveAll();
        EXPECT_EQ(NS::portDropCount(reason), before + 1);
        EXPECT_TRUE(isCutOff(socket));
        EXPECT_TRUE(receiver.collector->messages.empty());
    }
    static NS::FileDescriptor memoryFile(std::string_view content, unsigned seals) {
        NS::FileDescriptor file(::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        EXPECT_EQ(::write(file.get(), content.data(), content.size()),
                  static_cast<ssize_t>(content.size()));
        EXPECT_EQ(::fcntl(file.get(), F_ADD_SEALS, seals), 0);
        return file;
    }
    static NS::FrameHeader fileHeader(std::uint32_t count, std::uint64_t bodyLength) {
        NS::FrameHeader result = header(count, bodyLength);
        result.flags = NS::kFrameInMemoryFile;
        return result;
    }

    static NS::FrameHeader announcement() {
        NS::FrameHeader result = header(0, 0);
        result.flags = NS::kFrameAnnouncement;
        return result;
    }
    static NS::FrameHeader connectionHeader() {
        NS::FrameHeader result = header(0, 0);
        result.flags = NS::kFrameWithConnection;
        return result;
    }
    static std::pair<NS::FileDescriptor, NS::FileDescriptor> connectedSockets() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
        return {NS::FileDescriptor(ends[0]), NS::FileDescriptor(ends[1])};
    }

    static constexpr unsigned kSealed = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
    TestPort receiver;
};

TEST_F(Frame, IsDeliveredWhenItIsSound) {
    const NS::FileDescriptor socket = connect();
    sendRaw(socket, packet(header(2, 16 + 5), {3, 2}, "abcde"));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_EQ(receiver.collector->text(0, 0), "abc");
    EXPECT_EQ(receiver.collector->text(0, 1), "de");
}

TEST_F(Frame, CutsThePeerOffWhenItIsMalformed) {
    NS::FrameHeader badMagic = header(1, 9);
    badMagic.magic ^= 1;
    NS::FrameHeader badFlags = header(1, 9);
    badFlags.flags = 8;
    NS::FrameHeader badAnnouncement = announcement();
    badAnnouncement.replyPort = NS::PortIdentity::random();
    NS::FrameHeader badReserved = header(1, 9);
    badReserved.reserved = 1;
    const std::vector<std::string> malformed = {
        "x",
        packet(header(1, 9), {1}, "a").substr(0, sizeof(NS::FrameHeader) - 1),
        packet(badMagic, {1}, "a"),
        packet(badFlags, {1}, "a"),
        packet(badAnnouncement, {}, ""),
        packet(announcement(), {}, "a"),
        packet(badReserved, {1}, "a"),
        packet(header(1, 9), {1}, ""),
        packet(header(1, 9), {1}, "ab"),
        packet(header(1, 9), {2}, "a"),
        packet(header(1, 9), {0}, "a"),
        packet(header(1, 9), {~std::uint64_t{0}}, "a"),
        packet(header(2, 17), {~std::uint64_t{0}, 2}, "a"),
        packet(header(2, 9), {1}, "a"),
        packet(header(0, 1), {}, "a"),
        packet(header(0xFFFFFFFF, 9), {1}, "a"),
        packet(header(1, ~std::uint64_t{0}), {1}, "a"),
        packet(fileHeader(1, 9), {}, ""),
        packet(header(1, 8 + 140'000), {140'000}, std::string(140'000, 'x')),
    };
    for (const std::string& bytes : malformed) {
        expectCutOff(bytes, NS::PortDrop::kMalformedFrame);
    }
}

TEST_F(Frame, CutsOffNobodyButItsSender) {
    const NS::FileDescriptor good = connect();
    expectCutOff("x", NS::PortDrop::kMalformedFrame);
    sendRaw(good, packet(header(1, 9), {1}, "a"));
    EXPECT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
}

TEST_F(Frame, IsDeliveredFromASealedMemoryFile) {
    const NS::FileDescriptor socket = connect();
    const std::string body = packet(header(1, 0), {3}, "abc").substr(sizeof(NS::FrameHeader));
    const auto file = memoryFile(body, kSealed);
    sendRaw(socket, packet(fileHeader(1, body.size()), {}, ""), file.get());
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_EQ(receiver.collector->text(0), "abc");
}

TEST_F(Frame, IsRefusedFromAMemoryFileThatCanStillChange) {
    const std::string body = packet(header(1, 0), {3}, "abc").substr(sizeof(NS::FrameHeader));
    for (const unsigned seals :
         {0U, unsigned{F_SEAL_SHRINK | F_SEAL_GROW}, unsigned{F_SEAL_WRITE | F_SEAL_GROW},
          unsigned{F_SEAL_WRITE | F_SEAL_SHRINK}}) {
        const auto file = memoryFile(body, seals);
        expectCutOff(packet(fileHeader(1, body.size()), {}, ""), NS::PortDrop::kBadMemoryFile,
                     file.get());
    }
}

TEST_F(Frame, IsRefusedFromAMemoryFileOfAnotherLength) {
    const auto file = memoryFile("1234567890", kSealed);
    expectCutOff(packet(fileHeader(1, 11), {}, ""), NS::PortDrop::kBadMemoryFile, file.get());
    expectCutOff(packet(fileHeader(1, 9), {}, ""), NS::PortDrop::kBadMemoryFile, file.get());
}

TEST_F(Frame, IsRefusedFromAFileThatIsNoMemoryFile) {
    std::ofstream(folders.root() / "file") << "1234567890";
    const NS::FileDescriptor file(::open((folders.root() / "file").c_str(), O_RDONLY | O_CLOEXEC));
    expectCutOff(packet(fileHeader(1, 10), {}, ""), NS::PortDrop::kBadMemoryFile, file.get());
}

TEST_F(Frame, IsRefusedWithADescriptorThatItDoesNotNeed) {
    const auto file = memoryFile("x", kSealed);
    expectCutOff(packet(header(1, 9), {1}, "a"), NS::PortDrop::kMalformedFrame, file.get());
}

TEST_F(Frame, IsRefusedInAFileThatWasNotAnnounced) {
    const std::size_t before = Tests::openDescriptors();
    {
        const NS::FileDescriptor socket = connect();
        const std::string body = packet(header(1, 0), {3}, "abc").substr(sizeof(NS::FrameHeader));
        const auto file = memoryFile(body, kSealed);
        const int files[] = {file.get()};
        sendRaw(socket, packet(fileHeader(1, body.size()), {}, ""), files);
        serveAll();
        EXPECT_TRUE(isCutOff(socket));
    }
    EXPECT_EQ(Tests::openDescriptors(), before);
}

TEST_F(Frame, LosesADescriptorThatWasNotAnnounced) {
    const NS::FileDescriptor socket = connect();
    serveAll();
    const std::size_t before = Tests::openDescriptors();
    {
        const auto file = memoryFile("x", kSealed);
        const int files[] = {file.get()};
        sendRaw(socket, packet(header(1, 9), {1}, "a"), files);
    }
    serveAll();
    EXPECT_EQ(receiver.collector->messages.size(), 1U);
    EXPECT_EQ(Tests::openDescriptors(), before);
}

TEST_F(Frame, MayFollowAnAnnouncementWithoutADescriptor) {
    const NS::FileDescriptor socket = connect();
    for (int i = 0; i < 3; ++i) {
        sendRaw(socket, packet(announcement(), {}, ""));
    }
    sendRaw(socket, packet(header(1, 9), {1}, "a"));
    sendRaw(socket, packet(header(1, 9), {1}, "b"));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 2; }));
    EXPECT_EQ(receiver.collector->text(1), "b");
}

TEST_F(Frame, IsAnnouncedLongBeforeItComes) {
    const NS::FileDescriptor socket = connect();
    const std::string body = packet(header(1, 0), {3}, "abc").substr(sizeof(NS::FrameHeader));
    const auto file = memoryFile(body, kSealed);
    sendRaw(socket, packet(announcement(), {}, ""));
    serveAll();
    const int files[] = {file.get()};
    sendRaw(socket, packet(fileHeader(1, body.size()), {}, ""), files);
    serveAll();
    ASSERT_EQ(receiver.collector->messages.size(), 1U);
    EXPECT_EQ(receiver.collector->text(0), "abc");
}

TEST_F(Frame, IsRefusedFromAMemoryFileWithHoles) {
    const auto file = memoryFile("", 0);
    ASSERT_EQ(::ftruncate(file.get(), 1 << 20), 0);
    ASSERT_EQ(::fcntl(file.get(), F_ADD_SEALS, kSealed), 0);
    expectCutOff(packet(fileHeader(1, 1 << 20), {}, ""), NS::PortDrop::kBadMemoryFile, file.get());
}

TEST_F(Frame, IsRefusedFromAMemoryFileWhoseLengthsDoNotAddUp) {
    const std::string body = packet(header(1, 0), {4}, "abc").substr(sizeof(NS::FrameHeader));
    const auto file = memoryFile(body, kSealed);
    expectCutOff(packet(fileHeader(1, body.size()), {}, ""), NS::PortDrop::kMalformedFrame,
                 file.get());
}

TEST_F(Frame, CutsThePeerOffWhenItIsEmpty) {
    expectCutOff("", NS::PortDrop::kMalformedFrame);
}

TEST_F(Frame, CutsThePeerOffWhenItsReplyPortChanges) {
    const NS::FileDescriptor socket = connect();
    NS::FrameHeader first = header(0, 0);
    first.replyPort = NS::PortIdentity::random();
    NS::FrameHeader second = header(0, 0);
    second.replyPort = NS::PortIdentity::random();
    const auto before = NS::portDropCount(NS::PortDrop::kMalformedFrame);
    for (const NS::FrameHeader& each : {first, header(0, 0), first, second}) {
        sendRaw(socket, packet(each, {}, ""));
    }
    serveAll();
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kMalformedFrame), before + 1);
    ASSERT_EQ(receiver.collector->messages.size(), 3U);
    EXPECT_FALSE(receiver.collector->messages[0]->sendPort()->isValid());
}

TEST_F(Frame, BringsAFurtherConnection) {
    const NS::FileDescriptor socket = connect();
    auto [own, theirs] = connectedSockets();
    sendRaw(socket, packet(connectionHeader(), {}, ""), theirs.get());
    theirs.reset();
    sendRaw(own, packet(header(1, 9), {1}, "a"));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_EQ(receiver.collector->text(0), "a");
}

TEST_F(Frame, CutsThePeerOffWhenItsFurtherConnectionIsNone) {
    const NS::FileDescriptor stream(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto file = memoryFile("x", kSealed);
    NS::FrameHeader withComponents = connectionHeader();
    withComponents.componentCount = 1;
    withComponents.bodyLength = 8;
    const std::string sound = packet(connectionHeader(), {}, "");
    expectCutOff(sound, NS::PortDrop::kMalformedFrame);
    expectCutOff(sound, NS::PortDrop::kMalformedFrame, stream.get());
    expectCutOff(sound, NS::PortDrop::kMalformedFrame, file.get());
    const auto [own, theirs] = connectedSockets();
    expectCutOff(packet(withComponents, {0}, ""), NS::PortDrop::kMalformedFrame, theirs.get());
}

TEST_F(Frame, CutsThePeerOffWhenItBringsManyDescriptors) {
    const std::size_t before = Tests::openDescriptors();
    {
        const NS::FileDescriptor socket = connect();
        const auto file = memoryFile("12345678", kSealed);
        std::array<int, 8> files{};
        files.fill(file.get());
        sendRaw(socket, packet(announcement(), {}, ""));
        sendRaw(socket, packet(fileHeader(1, 8), {}, ""), files);
        serveAll();
        EXPECT_TRUE(isCutOff(socket));
    }
    EXPECT_EQ(Tests::openDescriptors(), before);
}

TEST_F(Frame, IsLostWhenThereIsNoDescriptorForItsFile) {
    const NS::FileDescriptor socket = connect();
    serveAll();
    const std::string body = packet(header(1, 0), {3}, "abc").substr(sizeof(NS::FrameHeader));
    const auto file = memoryFile(body, kSealed);
    sendRaw(socket, packet(fileHeader(1, body.size()), {}, ""), file.get());
    const auto before = NS::portDropCount(NS::PortDrop::kNoRoom);
    {
        const Tests::NoDescriptors none;
        serveAll();
    }
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kNoRoom), before + 1);
    sendRaw(socket, packet(header(1, 9), {1}, "a"));
    serveAll();
    ASSERT_EQ(receiver.collector->messages.size(), 1U);
    EXPECT_EQ(receiver.collector->text(0), "a");
}

TEST_F(Frame, IsNotSentInAFileWhenTooMuchWaitsInFiles) {
    const int nowhere = -1; // what cannot be asked has not been received
    NS::WaitingFiles waiting;
    EXPECT_TRUE(waiting.hasRoomFor(nowhere, NS::PortLimits::kWaitingInFiles));
    waiting.add(1);
    EXPECT_FALSE(waiting.hasRoomFor(nowhere, NS::PortLimits::kWaitingInFiles));
    EXPECT_TRUE(waiting.hasRoomFor(nowhere, NS::PortLimits::kWaitingInFiles - 1));
}

TEST_F(Frame, MakesRoomInFilesWhenTheyHaveBeenReceived) {
    const auto [out, in] = connectedSockets();
    NS::WaitingFiles waiting;
    const auto large = components({std::string(200'000, 'x')});
    ASSERT_FALSE(NS::sendFrame(out.get(), *large, {}, waiting));
    EXPECT_FALSE(waiting.hasRoomFor(out.get(), NS::PortLimits::kWaitingInFiles));
    EXPECT_EQ(std::get<NS::ReceiveState>(NS::receiveFrame(in.get(), NS::Announced::kNo)),
              NS::ReceiveState::kAnnounced);
    EXPECT_TRUE(std::holds_alternative<NS::Frame>(NS::receiveFrame(in.get(), NS::Announced::kYes)));
    EXPECT_TRUE(waiting.hasRoomFor(out.get(), NS::PortLimits::kWaitingInFiles));
}

TEST_F(Frame, LooksAsTheDocumentSays) {
    const auto [out, in] = connectedSockets();
    NS::PortIdentity reply;
    for (std::size_t i = 0; i < reply.bytes.size(); ++i) {
        reply.bytes[i] = static_cast<std::byte>(0xA0 + i);
    }
    NS::WaitingFiles waiting;
    ASSERT_FALSE(NS::sendFrame(out.get(), *components({"ext_share", "..."}), reply, waiting));
    std::array<char, 256> bytes{};
    const ssize_t length = ::recv(in.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    const std::string expected("QVP2\0\0\0\0"
                               "\xA0\xA1\xA2\xA3\xA4\xA5\xA6\xA7\xA8\xA9\xAA\xAB\xAC\xAD\xAE\xAF"
                               "\2\0\0\0\0\0\0\0"
                               "\x1C\0\0\0\0\0\0\0"
                               "\x09\0\0\0\0\0\0\0"
                               "\3\0\0\0\0\0\0\0"
                               "ext_share...",
                               68);
    EXPECT_EQ(std::string(bytes.data(), static_cast<std::size_t>(length)), expected);
}

} // namespace
