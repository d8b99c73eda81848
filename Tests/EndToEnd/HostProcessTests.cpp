#include "Tests/EndToEnd/ExtensionProcess.h"
#include "Tests/EndToEnd/HostListener.h"

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/Testing/PumpUntil.h"
#include "Platform/Ports/linux/RuntimeFolder.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <fstream>
#include <sys/socket.h>

namespace fs = std::filesystem;

namespace {

class HostProcess : public Tests::ProcessTest {
  protected:
    // What is no frame, on the host's own socket.
    void sendMalformedFrame() const {
        const std::string entry =
            Tests::contentsOf(socketFolder() / "com.Quorvane.QVExtensionCommsServer");
        const auto folder = NS::RuntimeFolder::open();
        const NS::FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        const sockaddr_un address = folder->address(entry.substr(0, 32));
        ASSERT_EQ(
            ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        ASSERT_EQ(::send(socket.get(), "junk", 4, MSG_NOSIGNAL), 4);
        char byte = 0;
        EXPECT_EQ(::recv(socket.get(), &byte, 1, 0), 0); // cut off
    }
    // A message without a port to answer to.
    static void sendToHost(std::initializer_list<std::string_view> components) {
        const auto port = NS::MachBootstrapServer::sharedInstance()->portForName(
            *NS::str("com.Quorvane.QVExtensionCommsServer"));
        ASSERT_TRUE(port);
        const auto list = NS::make<NS::MutableArray>();
        for (const std::string_view component : components) {
            list->addObject(NS::Data::dataWithBytes(NS::bytesOf(component)));
        }
        ASSERT_TRUE(
            port->sendBeforeDate_components_from_reserved(NS::Date::date(), *list, nullptr, 0));
    }
    Tests::Process startHost(std::vector<std::string> options = {},
                             const std::string& name = "host") {
        options.insert(options.begin(), {"--drive", drive.string()});
        return {HOST_PROGRAM, options, folders.root() / (name + ".out"),
                folders.root() / (name + ".err")};
    }
    static bool journalShows(const Tests::Process& host, const std::string& text) {
        return Tests::waitUntil([&] { return host.output().find(text) != std::string::npos; });
    }
};

TEST_F(HostProcess, BringsAnExtensionUpAndEndsItWithItself) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(logShows("initial init at"));
    ASSERT_TRUE(logShows("received info <QVUserInfoItem: 0x"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.waitForExit(), 0);
    EXPECT_EQ(extension.waitForExit(), 0);
    EXPECT_EQ(registeredEntries(), 0U);
}

TEST_F(HostProcess, EndsWithStatus0AlsoByInterrupt) {
    auto host = startHost();
    ASSERT_TRUE(Tests::waitUntil([&] { return registeredEntries() > 0; }));
    host.signal(SIGINT);
    EXPECT_EQ(host.waitForExit(), 0);
}

TEST_F(HostProcess, WritesALineOfJsonForEachRequest) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(journalShows(host, "ext_req_userinfo"));
    std::istringstream lines(host.output());
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    const auto first = nlohmann::json::parse(line);
    EXPECT_EQ(first["action"], "ext_alive");
    EXPECT_EQ(first["payload"].dump(), "[]");
    EXPECT_TRUE(first["client"].get<std::string>().starts_with("<NSMachPort: 0x"));
    ASSERT_TRUE(std::getline(lines, line));
    const auto second = nlohmann::json::parse(line);
    EXPECT_EQ(second["action"], "ext_req_userinfo");
    EXPECT_EQ(second["client"], first["client"]);
}

TEST_F(HostProcess, WritesItsJournalIntoAFile) {
    const fs::path journal = folders.root() / "journal";
    auto host = startHost({"--journal", journal.string()});
    auto extension = startExtension();
    EXPECT_TRUE(Tests::waitUntil(
        [&] { return Tests::contentsOf(journal).find("ext_req_userinfo") != std::string::npos; }));
    EXPECT_EQ(host.output(), "");
}

TEST_F(HostProcess, SendsTheFiguresOfItsDriveAndItsAccount) {
    fs::create_directories(drive / "Trash");
    std::ofstream(drive / "a.txt") << std::string(1000, 'x');
    std::ofstream(drive / "Trash" / "b.txt") << std::string(24, 'x');
    auto host = startHost({"--plan", "Unlimited Family", "--quota-mib", "77"});
    ASSERT_TRUE(Tests::hostIsUp());
    Tests::HostListener listener;
    ASSERT_TRUE(NS::pumpUntil([&] { return static_cast<bool>(listener.info()); }));
    EXPECT_EQ(listener.drivePath(), fs::canonical(drive).string());
    const auto info = listener.info();
    EXPECT_EQ(info->plan()->description()->utf8(), "Unlimited Family");
    EXPECT_EQ(NS::longLongValue(info->storageMax()), 77);
    EXPECT_EQ(NS::longLongValue(info->storageUsed()), 1024);
    EXPECT_EQ(NS::longLongValue(info->trashCount()), 1);
}

TEST_F(HostProcess, OutlivesAMalformedFrameAndAnAnnouncementWithoutAPort) {
    auto host = startHost();
    ASSERT_TRUE(Tests::hostIsUp());
    sendMalformedFrame();
    sendToHost({"ext_alive"});
    ASSERT_TRUE(journalShows(host, R"({"action":"ext_alive","payload":[],"client":null})"));
    Tests::HostListener listener;
    EXPECT_TRUE(NS::pumpUntil([&] { return static_cast<bool>(listener.info()); }));
    EXPECT_TRUE(host.isRunning());
}

TEST_F(HostProcess, RefusesARequestThatIsNotAsTheLinkHasIt) {
    auto host = startHost();
    ASSERT_TRUE(Tests::hostIsUp());
    sendToHost({"ext_share", "no archive"});
    EXPECT_TRUE(journalShows(host, R"("refused":"ext_share","path":null,"reason":"NSInvalid)"));
    sendToHost({"ext_movetotrash"});
    EXPECT_TRUE(journalShows(host, R"("refused":"ext_movetotrash","path":null,"reason":"not as)"));
    sendToHost({"ext_req_userinfo", "more than it has"});
    EXPECT_TRUE(journalShows(host, R"("refused":"ext_req_userinfo")"));
    EXPECT_TRUE(host.isRunning());
}

TEST_F(HostProcess, RefusesToRunBesideAnother) {
    auto host = startHost();
    ASSERT_TRUE(Tests::hostIsUp());
    auto second = startHost({}, "second");
    EXPECT_EQ(second.waitForExit(), 1);
    EXPECT_NE(second.errors().find("another host application is running"), std::string::npos);
    EXPECT_TRUE(host.isRunning());
}

TEST_F(HostProcess, TakesOverTheNameOfAHostThatWasKilled) {
    {
        auto killed = startHost({}, "killed");
        ASSERT_TRUE(Tests::hostIsUp());
        killed.signal(SIGKILL);
        ASSERT_EQ(killed.waitForExit(), 128 + SIGKILL);
    }
    auto host = startHost();
    auto extension = startExtension();
    EXPECT_TRUE(journalShows(host, "ext_req_userinfo"));
}

TEST_F(HostProcess, RefusesADriveThatIsNoFolder) {
    std::ofstream(folders.root() / "file") << "x";
    drive = folders.root() / "file";
    auto host = startHost();
    EXPECT_EQ(host.waitForExit(), 1);
    EXPECT_NE(host.errors().find("is not a folder that can be read"), std::string::npos);
}

TEST_F(HostProcess, TellsItsVersion) {
    auto host = startHost({"--version"});
    EXPECT_EQ(host.waitForExit(), 0);
    EXPECT_EQ(host.output(), "quorvane-host " QUORVANE_VERSION "\n");
}

} // namespace
