#include "QVFinderExtension/QVExtensionCommsServer.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVFinderExtension/Testing/LinkFixture.h"

#include <functional>
#include <memory>

namespace {

using Tests::LinkRecorder;
using Tests::Scheduled;
using ClientEndpoint = Scheduled<QVExtensionCommsComponent>;

class NoticeRecorder final : public NS::Object {
    NS_OBJECT(NoticeRecorder)
  public:
    void posted(NS::RefPtr<NS::Notification> notice) {
        notices.push_back(notice);
        if (onNotice) {
            onNotice();
        }
    }
    std::vector<NS::RefPtr<NS::Notification>> notices;
    std::function<void()> onNotice;
};

constexpr NS::Method kNoticeMethods[] = {NS::method<&NoticeRecorder::posted>("posted:")};
constinit const NS::Class NoticeRecorder::kClass{
    .name = "NoticeRecorder", .superclass = &NS::Object::kClass, .methods = kNoticeMethods};

class CommsServer : public Tests::LinkTest {
  protected:
    CommsServer() {
        server->setTarget_selector_for(server.ref(), {"extensionAlive:"}, NS::str("ext_alive"));
        server->notificationCenter()->addObserver_selector_name_object(
            notices, {"posted:"}, NS::str("nc_portinv"), nullptr);
    }

    std::unique_ptr<ClientEndpoint> newClient(const char* name, int announcements = 1) {
        auto client = std::make_unique<ClientEndpoint>(NS::str(name));
        for (int i = 0; i < announcements; ++i) {
            announce(*client);
        }
        return client;
    }
    void announce(const ClientEndpoint& client) {
        const std::size_t known = server->ports()->count();
        client->sendAction_data_to(NS::str("ext_alive"), *NS::make<NS::Array>(), server->port());
        EXPECT_TRUE(pump([&] { return server->ports()->count() == known + 1; }));
    }
    NS::Ref<LinkRecorder> record(const ClientEndpoint& client, std::string_view action,
                                 NS::Selector selector = LinkRecorder::kNothing) {
        const auto recorder = NS::make<LinkRecorder>();
        client->setTarget_selector_for(recorder, selector, NS::str(action));
        return recorder;
    }

    Scheduled<QVExtensionCommsServer> server{NS::str("test.server")};
    NS::Ref<NoticeRecorder> notices = NS::make<NoticeRecorder>();
};

TEST_F(CommsServer, HasNoClientsBeforeOneAnnouncesItself) {
    EXPECT_FALSE(server->hasClients());
    server->broadcastShutdown();
    EXPECT_TRUE(notices->notices.empty());
}

TEST_F(CommsServer, KeepsClientsInTheOrderOfTheirAnnouncements) {
    const auto first = newClient("test.1");
    const auto second = newClient("test.2");
    ASSERT_EQ(server->ports()->count(), 2U);
    EXPECT_TRUE(server->ports()->objectAtIndex(0)->isEqual((*first)->port().get()));
    EXPECT_TRUE(server->ports()->objectAtIndex(1)->isEqual((*second)->port().get()));
    EXPECT_TRUE(server->hasClients());
}

TEST_F(CommsServer, BroadcastsToEveryClient) {
    const auto first = newClient("test.1");
    const auto second = newClient("test.2");
    const auto atFirst = record(*first, "ext_act_beg");
    const auto atSecond = record(*second, "ext_act_beg");
    server->broadcastNetworkActivityBegin();
    EXPECT_TRUE(pump([&] { return atFirst->calls == 1 && atSecond->calls == 1; }));
}

TEST_F(CommsServer, BroadcastsEachActionUnderItsName) {
    const auto client = newClient("test.1");
    const auto begin = record(*client, "ext_act_beg");
    const auto end = record(*client, "ext_act_end");
    const auto shutdown = record(*client, "ext_serv_shtd");
    server->broadcastNetworkActivityBegin();
    server->broadcastNetworkActivityEnd();
    server->broadcastShutdown();
    EXPECT_TRUE(pump([&] { return begin->calls == 1 && end->calls == 1 && shutdown->calls == 1; }));
}

TEST_F(CommsServer, BroadcastsWithoutAPortToAnswerTo) {
    const auto client = newClient("test.1");
    const auto recorder = record(*client, "ext_obs_beg", LinkRecorder::kReceivedFrom);
    server->broadcastAction_data(NS::str("ext_obs_beg"), *payload({archived(NS::str("/"))}));
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_FALSE(recorder->ports[0]);
}

TEST_F(CommsServer, BroadcastsTheAccountRecord) {
    const auto client = newClient("test.1");
    const auto recorder = record(*client, "ext_bc_userinfo", LinkRecorder::kReceived);
    const auto info = NS::make<QVUserInfoItem>();
    info->setPlan(NS::str("Personal"));
    info->setStorageUsed(NS::Number::numberWithLongLong(123));
    server->broadcastUserInfo(info);
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    const auto received = NS::cast<QVUserInfoItem>(recorder->objects[0]);
    EXPECT_TRUE(received->plan()->isEqual(NS::str("Personal").get()));
    EXPECT_EQ(NS::longLongValue(received->storageUsed()), 123);
}

TEST_F(CommsServer, BroadcastsNilAsNil) {
    const auto client = newClient("test.1");
    const auto recorder = record(*client, "ext_bc_userinfo", LinkRecorder::kReceived);
    server->broadcastUserInfo(nullptr);
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_FALSE(recorder->objects[0]);
}

TEST_F(CommsServer, BroadcastsTwiceToAClientThatAnnouncedItselfTwice) {
    const auto client = newClient("test.1", 2);
    const auto recorder = record(*client, "ext_act_beg");
    const auto last = record(*client, "ext_act_end");
    server->broadcastNetworkActivityBegin();
    server->broadcastNetworkActivityEnd();
    ASSERT_TRUE(pump([&] { return last->calls == 2; }));
    EXPECT_EQ(recorder->calls, 2);
}

TEST_F(CommsServer, DropsADeadClientInABroadcastAndReachesTheNext) {
    const auto first = newClient("test.1");
    const auto second = newClient("test.2");
    const auto recorder = record(*second, "ext_act_beg");
    const auto description = server->ports()->objectAtIndex(0)->description();
    first->end();
    server->broadcastNetworkActivityBegin();
    EXPECT_TRUE(pump([&] { return recorder->calls == 1; }));
    ASSERT_EQ(notices->notices.size(), 1U);
    EXPECT_TRUE(notices->notices[0]->object()->isEqual(description.get()));
    EXPECT_EQ(server->ports()->count(), 1U);
    EXPECT_TRUE(server->hasClients());
}

TEST_F(CommsServer, TellsTwiceOfADeadClientThatAnnouncedItselfTwice) {
    const auto client = newClient("test.1", 2);
    client->end();
    EXPECT_FALSE(server->hasClients());
    EXPECT_EQ(notices->notices.size(), 2U);
    EXPECT_EQ(server->ports()->count(), 0U);
}

TEST_F(CommsServer, LooksAtEveryClientAlsoAfterALiveOne) {
    const auto first = newClient("test.1");
    const auto second = newClient("test.2");
    const auto third = newClient("test.3");
    second->end();
    third->end();
    EXPECT_TRUE(server->hasClients());
    EXPECT_EQ(notices->notices.size(), 2U);
    EXPECT_EQ(server->ports()->count(), 1U);
}

TEST_F(CommsServer, PostsTheNoticeBeforeThePortLeavesTheList) {
    const auto client = newClient("test.1");
    const auto port = NS::cast<NS::MachPort>(server->ports()->objectAtIndex(0));
    ASSERT_TRUE(port);
    std::size_t countAtNotice = 0;
    notices->onNotice = [&] {
        countAtNotice = server->ports()->count();
    };
    server->removeInvalidatedPort(NS::Ref<NS::MachPort>(*port));
    EXPECT_EQ(countAtNotice, 1U);
    EXPECT_EQ(server->ports()->count(), 0U);
}

TEST_F(CommsServer, KeepsAClientWhoseQueueIsFull) {
    const auto client = newClient("test.1");
    const auto recorder = record(*client, "ext_act_beg");
    for (int i = 0; i < 5000; ++i) {
        server->broadcastNetworkActivityBegin();
    }
    while (NS::RunLoop::currentRunLoop()->serveReady()) {
    }
    EXPECT_GE(recorder->calls, 256);
    EXPECT_LT(recorder->calls, 5000);
    EXPECT_TRUE(server->hasClients());
    EXPECT_EQ(server->ports()->count(), 1U);
    EXPECT_TRUE(notices->notices.empty());
}

TEST_F(CommsServer, AppendsAClientThatAnnouncesItselfAfterTheShutdown) {
    const auto client = newClient("test.1");
    server->broadcastShutdown();
    announce(*client);
    EXPECT_EQ(server->ports()->count(), 2U);
}

TEST_F(CommsServer, IsNotFoundUnderANameThatAnotherHas) {
    Scheduled<QVExtensionCommsServer> second(NS::str("test.server"));
    const auto found =
        NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str("test.server"));
    EXPECT_TRUE(found->isEqual(server->port().get()));
    EXPECT_FALSE(found->isEqual(second->port().get()));
    second->setPortName(nullptr); // or its end would take the first one's name
}

TEST_F(CommsServer, RaisesForAnAnnouncementWithoutAPort) {
    EXPECT_THROW(server->extensionAlive(nullptr), NS::Exception);
}

TEST_F(CommsServer, HasANotificationCentreOfItsOwn) {
    Scheduled<QVExtensionCommsServer> other(NS::str("test.other"));
    EXPECT_NE(other->notificationCenter(), server->notificationCenter());
}

// The shared server lives as long as the process, so it is looked at in one of its own.
TEST_F(CommsServer, IsMadeOnceUnderTheWellKnownName) {
    EXPECT_EXIT(
        {
            const auto shared = QVExtensionCommsServer::defaultServer();
            const bool same = shared == QVExtensionCommsServer::defaultServer();
            const auto found = NS::MachBootstrapServer::sharedInstance()->portForName(
                *NS::str("com.Quorvane.QVExtensionCommsServer"));
            const bool named = found && found->isEqual(shared->port().get());
            std::exit(same && named && shared->actions()->objectForKey("ext_alive") ? 0 : 9);
        },
        testing::ExitedWithCode(0), "started ext\\. server <NSMachPort: 0x");
}

} // namespace
