#include "Tests/EndToEnd/ExtensionProcess.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Testing/PumpUntil.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVFinderExtension/QVExtensionActions.h"
#include "QVFinderExtension/QVExtensionCommsServer.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <functional>

namespace fs = std::filesystem;

namespace {

constexpr int kAborted = 128 + SIGABRT;

// The test itself is the host of real extension processes.
class TestHost final : public NS::Object {
    NS_OBJECT(TestHost)
  public:
    void clientAlive(NS::RefPtr<NS::MachPort> client) { clients.push_back(client); }
    void userInfoRequested() { ++userInfoRequests; }

    std::vector<NS::RefPtr<NS::MachPort>> clients;
    int userInfoRequests = 0;
};

constexpr NS::Method kMethods[] = {
    NS::method<&TestHost::clientAlive>("clientAlive:"),
    NS::method<&TestHost::userInfoRequested>("userInfoRequested"),
};
constinit const NS::Class TestHost::kClass{
    .name = "TestHost", .superclass = &NS::Object::kClass, .methods = kMethods};

class ExtensionProcess : public Tests::ProcessTest {
  protected:
    ExtensionProcess() {
        server->setTarget_selector_for(host, {"clientAlive:"}, NS::str("ext_alive"));
        server->setTarget_selector_for(host, {"userInfoRequested"}, NS::str("ext_req_userinfo"));
    }
    ~ExtensionProcess() override { close(); }

    // The host's end goes, as when its process ends.
    void close() {
        if (server) {
            NS::RunLoop::currentRunLoop()->removePort_forMode(
                NS::Ref<NS::MachPort>(*server->port()), NS::RunLoopMode::kDefault);
            server = nullptr;
            host->clients.clear();
        }
    }
    static bool pump(const std::function<bool()>& condition) { return NS::pumpUntil(condition); }
    bool pumpForClients(std::size_t count) {
        return pump([&] { return host->clients.size() == count; });
    }

    static NS::Ref<NS::Object> archived(const NS::RefPtr<NS::Object>& object) {
        return NS::KeyedArchiver::archivedDataWithRootObject(object);
    }
    void send(std::string_view action, std::initializer_list<NS::Ref<NS::Object>> payload) {
        for (const auto& client : host->clients) {
            server->sendAction_data_to(NS::str(action), *NS::Array::arrayWithObjects(payload),
                                       client);
        }
    }
    void sendInit() { send("ext_init", {archived(NS::str(drive.string()))}); }
    // Brings an extension up to the end of its initialiser.
    void bringUp() {
        ASSERT_TRUE(pumpForClients(1));
        sendInit();
        ASSERT_TRUE(pump([&] { return host->userInfoRequests > 0; }));
        ASSERT_TRUE(logShows("initial init at"));
    }

    NS::Ref<TestHost> host = NS::make<TestHost>();
    NS::RefPtr<QVExtensionCommsServer> server =
        NS::make<QVExtensionCommsServer>(NS::str(kServerPortName));
};

TEST_F(ExtensionProcess, EndsWithStatus0WhenTheHostSaysSo) {
    auto extension = startExtension();
    bringUp();
    send("ext_serv_shtd", {});
    EXPECT_EQ(extension.waitForExit(), 0);
}

TEST_F(ExtensionProcess, EndsWithStatus0AlsoWhileItWaitsForTheMountPath) {
    auto extension = startExtension();
    ASSERT_TRUE(pumpForClients(1));
    send("ext_serv_shtd", {});
    EXPECT_EQ(extension.waitForExit(), 0);
    EXPECT_EQ(logs().find("initial init"), std::string::npos);
}

TEST_F(ExtensionProcess, LeavesNoNameBehindWhenItEnds) {
    const std::size_t before = registeredEntries();
    auto extension = startExtension();
    bringUp();
    EXPECT_GT(registeredEntries(), before);
    send("ext_serv_shtd", {});
    ASSERT_EQ(extension.waitForExit(), 0);
    EXPECT_EQ(registeredEntries(), before);
}

TEST_F(ExtensionProcess, LeavesNoNameBehindWhenASignalEndsIt) {
    const std::size_t before = registeredEntries();
    auto extension = startExtension();
    bringUp();
    extension.signal(SIGTERM);
    EXPECT_EQ(extension.waitForExit(), 128 + SIGTERM);
    EXPECT_EQ(registeredEntries(), before);
}

TEST_F(ExtensionProcess, AnnouncesItselfUnderANameOfItsOwnBesideAnother) {
    auto first = startExtension("first");
    auto second = startExtension("second");
    ASSERT_TRUE(pumpForClients(2));
    EXPECT_FALSE(host->clients[0]->isEqual(host->clients[1].get()));
    sendInit();
    ASSERT_TRUE(pump([&] { return host->userInfoRequests == 2; }));
    send("ext_serv_shtd", {});
    EXPECT_EQ(first.waitForExit(), 0);
    EXPECT_EQ(second.waitForExit(), 0);
}

TEST_F(ExtensionProcess, StoresTheRecordOfTheHost) {
    auto extension = startExtension();
    bringUp();
    const auto info = NS::make<QVUserInfoItem>();
    info->setPlan(NS::str("Personal"));
    send("ext_bc_userinfo", {archived(info)});
    EXPECT_TRUE(logShows("received info <QVUserInfoItem: 0x"));
}

TEST_F(ExtensionProcess, IgnoresTheActionsThatItHasNoHandlerFor) {
    auto extension = startExtension();
    bringUp();
    send("ext_act_beg", {});
    send("ext_act_end", {});
    send("ext_share", {archived(NS::str("/a"))});
    send("ext_other", {});
    send("ext_serv_shtd", {});
    EXPECT_EQ(extension.waitForExit(), 0);
}

TEST_F(ExtensionProcess, EndsByAnUncaughtExceptionForTooManyComponents) {
    auto extension = startExtension();
    bringUp();
    send("ext_init", {archived(NS::str("/a")), archived(NS::str("/b"))});
    EXPECT_EQ(extension.waitForExit(), kAborted);
    EXPECT_NE(logs().find("================= Exception: -[NSInvocation setArgument:atIndex:]"),
              std::string::npos)
        << logs();
}

TEST_F(ExtensionProcess, EndsByAnUncaughtExceptionForAComponentThatIsNoArchive) {
    auto extension = startExtension();
    bringUp();
    send("ext_init", {NS::Data::dataWithBytes(NS::bytesOf("no archive"))});
    EXPECT_EQ(extension.waitForExit(), kAborted);
    EXPECT_NE(logs().find("================= Exception: "), std::string::npos);
    EXPECT_NE(logs().find("incomprehensible archive"), std::string::npos) << logs();
}

TEST_F(ExtensionProcess, LogsTheCallStackOfAnUncaughtException) {
    auto extension = startExtension();
    bringUp();
    send("ext_init", {NS::Data::dataWithBytes(NS::bytesOf("no archive"))});
    ASSERT_EQ(extension.waitForExit(), kAborted);
    EXPECT_NE(logs().find("QVExtensionCommsComponent::handlePortMessage"), std::string::npos)
        << logs();
    EXPECT_NE(logs().find("main + "), std::string::npos) << logs();
}

TEST_F(ExtensionProcess, DoesNotComeBackToAHostThatCameBackUnderTheSameName) {
    auto extension = startExtension("first");
    bringUp();
    close();
    server = NS::make<QVExtensionCommsServer>(NS::str(kServerPortName));
    server->setTarget_selector_for(host, {"clientAlive:"}, NS::str("ext_alive"));
    auto next = startExtension("next");
    ASSERT_TRUE(pumpForClients(1));
    EXPECT_TRUE(extension.isRunning());
    // Once the next one is up, the first has had its time to come back.
    sendInit();
    ASSERT_TRUE(pump([&] { return logShowsNow("initial init at", 2); }));
    EXPECT_EQ(host->clients.size(), 1U);
}

TEST_F(ExtensionProcess, GetsTheShutdownOfAHostThatEndsWithItsRequestsUnread) {
    auto extension = startExtension();
    bringUp();
    // What it answers to this waits unread when the host goes.
    sendInit();
    ASSERT_TRUE(Tests::waitUntil([&] { return logShowsNow("received init at", 2); }));
    send("ext_serv_shtd", {});
    close();
    EXPECT_EQ(extension.waitForExit(), 0);
}

TEST_F(ExtensionProcess, LosesMessagesThatItsQueueCannotHoldAndNothingElse) {
    auto extension = startExtension();
    bringUp();
    extension.signal(SIGSTOP);
    ASSERT_TRUE(extension.waitForState('T'));
    for (int i = 0; i < 5000; ++i) {
        send("ext_bc_userinfo", {archived(nullptr)});
    }
    EXPECT_TRUE(host->clients[0]->isValid());
    extension.signal(SIGCONT);
    ASSERT_TRUE(logShows("received info (null)"));
    EXPECT_TRUE(extension.isRunning());
    ASSERT_TRUE(Tests::waitUntil([&] {
        send("ext_serv_shtd", {});
        return !extension.isRunning();
    }));
    EXPECT_EQ(extension.waitForExit(), 0);
}

TEST_F(ExtensionProcess, IsNotWokenWhenThereIsNothingToDo) {
    auto extension = startExtension();
    bringUp();
    ASSERT_TRUE(extension.waitForState('S'));
    const auto wakeUps = extension.voluntarySwitches();
    NS::pumpUntil([] { return false; }, 1.0);
    EXPECT_EQ(extension.voluntarySwitches(), wakeUps);
}

TEST_F(ExtensionProcess, TellsItsVersion) {
    Tests::Process extension(EXTENSION_PROGRAM, {"--version"}, folders.root() / "out",
                             folders.root() / "err");
    EXPECT_EQ(extension.waitForExit(), 0);
    EXPECT_EQ(extension.output(), "quorvane-finder-extension " QUORVANE_VERSION "\n");
}

} // namespace
