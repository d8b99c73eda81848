#include "QVFinderExtension/QVExtensionCommsClient.h"

#include "Platform/Foundation/Clock.h"
#include "QVFinderExtension/Testing/LinkFixture.h"

#include <functional>

namespace {

using Tests::LinkRecorder;
using Tests::Scheduled;

// A clock that moves only when somebody sleeps.
class ManualClock final : public NS::Clock {
  public:
    double absoluteTime() override { return now; }
    void sleep(double seconds) override {
        now += seconds;
        sleeps.push_back(seconds);
        if (afterSleep) {
            afterSleep();
        }
    }

    double now = 1000;
    std::vector<double> sleeps;
    std::function<void()> afterSleep;
};

class CommsClient : public Tests::LinkTest {
  protected:
    void handle(NS::Selector selector, std::string_view action) {
        host->setTarget_selector_for(recorder, selector, NS::str(action));
    }

    NS::Ref<LinkRecorder> recorder = NS::make<LinkRecorder>();
    Scheduled<QVExtensionCommsServer> host{NS::str(kServerPortName)};
};

TEST_F(CommsClient, HasANameOfItsOwn) {
    Scheduled<QVExtensionCommsClient> first;
    Scheduled<QVExtensionCommsClient> second;
    EXPECT_TRUE(first->portName()->hasPrefix(*NS::str("com.Quorvane.QVExtensionCommsClient-")));
    EXPECT_FALSE(first->portName()->isEqual(second->portName().get()));
}

TEST_F(CommsClient, AnnouncesItselfOnceWhenItIsConnected) {
    handle(LinkRecorder::kReceivedPort, "ext_alive");
    Scheduled<QVExtensionCommsClient> client;
    client->init();
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_TRUE(recorder->ports[0]->isEqual(client->port().get()));
    EXPECT_TRUE(client->serverPort()->isEqual(host->port().get()));
}

TEST_F(CommsClient, SaysOnTheConsoleLogWhatItIsConnectedTo) {
    Scheduled<QVExtensionCommsClient> client;
    testing::internal::CaptureStderr();
    client->init();
    const std::string log = testing::internal::GetCapturedStderr();
    const std::string expected = "client " + client->port()->description()->utf8() +
                                 " connected to server port " +
                                 client->serverPort()->description()->utf8() + "\n";
    EXPECT_NE(log.find(expected), std::string::npos) << log;
}

struct Request {
    const char* action;
    void (QVExtensionCommsClient::*send)(const NS::RefPtr<NS::Object>&);
};

constexpr Request kRequests[] = {
    {"ext_share",          &QVExtensionCommsClient::share        },
    {"ext_show_props",     &QVExtensionCommsClient::showProps    },
    {"ext_refresh_folder", &QVExtensionCommsClient::refreshFolder},
    {"ext_movetotrash",    &QVExtensionCommsClient::moveToTrash  },
    {"ext_trashdelete",    &QVExtensionCommsClient::delete_      },
    {"ext_trashrestore",   &QVExtensionCommsClient::restore      },
};

TEST_F(CommsClient, SendsEachRequestWithItsArgument) {
    Scheduled<QVExtensionCommsClient> client;
    client->init();
    for (const Request& request : kRequests) {
        const auto handler = NS::make<LinkRecorder>();
        host->setTarget_selector_for(handler, LinkRecorder::kReceived, NS::str(request.action));
        const auto argument = NS::Array::arrayWithObjects({NS::str(request.action)});
        ((*client).*request.send)(argument);
        ((*client).*request.send)(nullptr);
        ASSERT_TRUE(pump([&] { return handler->calls == 2; })) << request.action;
        EXPECT_TRUE(handler->objects[0]->isEqual(argument.get())) << request.action;
        EXPECT_FALSE(handler->objects[1]) << request.action;
    }
}

TEST_F(CommsClient, SendsObservedFoldersWithTheirPathAndItsPort) {
    Scheduled<QVExtensionCommsClient> client;
    client->init();
    handle(LinkRecorder::kReceivedFrom, "ext_obs_beg");
    handle(LinkRecorder::kReceivedFrom, "ext_obs_end");
    client->beginObserving(NS::str("/"));
    client->endObserving(nullptr);
    ASSERT_TRUE(pump([&] { return recorder->calls == 2; }));
    EXPECT_TRUE(recorder->objects[0]->isEqual(NS::str("/").get()));
    EXPECT_FALSE(recorder->objects[1]);
    EXPECT_TRUE(recorder->ports[0]->isEqual(client->port().get()));
    EXPECT_TRUE(recorder->ports[1]->isEqual(client->port().get()));
}

TEST_F(CommsClient, SendsRequestsWithoutAnArgumentWithoutPayload) {
    Scheduled<QVExtensionCommsClient> client;
    client->init();
    handle(LinkRecorder::kReceived, "ext_emptytrash");
    handle(LinkRecorder::kReceived, "ext_req_userinfo");
    client->emptyTrash();
    client->requestUserInfo();
    ASSERT_TRUE(pump([&] { return recorder->calls == 2; }));
    // A handler that no payload ever reached is called with nil.
    EXPECT_FALSE(recorder->objects[0]);
    EXPECT_FALSE(recorder->objects[1]);
}

TEST_F(CommsClient, KeepsSendingToTheHostThatItFoundAlsoWhenThatIsGone) {
    Scheduled<QVExtensionCommsClient> client;
    client->init();
    ASSERT_TRUE(pump([&] { return host->ports()->count() == 0 || host->hasClients(); }));
    host.end();
    Scheduled<QVExtensionCommsServer> next(NS::str(kServerPortName));
    next->setTarget_selector_for(recorder, LinkRecorder::kReceived, NS::str("ext_share"));
    client->share(NS::str("/a"));
    EXPECT_FALSE(client->serverPort()->isValid());
    NS::RunLoop::currentRunLoop()->serveReady();
    EXPECT_EQ(recorder->calls, 0);
}

class CommsClientLookUp : public Tests::LinkTest {
  protected:
    ManualClock clock;
    NS::ScopedClock scoped{clock};
};

TEST_F(CommsClientLookUp, EndsTheProcessWithStatus1AfterAHundredAndTwentySeconds) {
    EXPECT_EXIT(
        {
            clock.afterSleep = [this] {
                // One look-up a second, and none after the time-out.
                if (clock.sleeps.size() > 120 || clock.sleeps.back() != 1.0) {
                    std::_Exit(9);
                }
            };
            Scheduled<QVExtensionCommsClient> client;
            static const std::vector<double>* sleeps = &clock.sleeps;
            std::atexit([] { std::fprintf(stderr, "%zu look-ups\n", sleeps->size()); });
            client->init();
        },
        testing::ExitedWithCode(1), "^120 look-ups\n$");
}

TEST_F(CommsClientLookUp, IsNotMadeAtAllWithoutTime) {
    Scheduled<QVExtensionCommsServer> host(NS::str(kServerPortName));
    for (const double timeout : {0.0, -1.0}) {
        EXPECT_EXIT(
            {
                Scheduled<QVExtensionCommsClient> client;
                client->waitForServerPortFor(timeout);
            },
            testing::ExitedWithCode(1), "");
    }
}

TEST_F(CommsClientLookUp, FindsAHostThatComesAfterThirtySeconds) {
    std::unique_ptr<Scheduled<QVExtensionCommsServer>> host;
    const auto recorder = NS::make<LinkRecorder>();
    clock.afterSleep = [&] {
        if (clock.sleeps.size() == 30) {
            host = std::make_unique<Scheduled<QVExtensionCommsServer>>(NS::str(kServerPortName));
            (*host)->setTarget_selector_for(recorder, LinkRecorder::kReceivedPort,
                                            NS::str("ext_alive"));
        }
    };
    Scheduled<QVExtensionCommsClient> client;
    testing::internal::CaptureStderr();
    client->init();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("connected to server port"),
              std::string::npos);
    EXPECT_EQ(clock.sleeps.size(), 30U);
    ASSERT_TRUE(pump([&] { return recorder->calls > 0; }));
    NS::RunLoop::currentRunLoop()->serveReady();
    EXPECT_EQ(recorder->calls, 1);
}

} // namespace
