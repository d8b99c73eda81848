#include "QVFinderExtension/QVExtensionCommsComponent.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "QVFinderExtension/Testing/LinkFixture.h"

#include <array>

namespace {

using Tests::LinkRecorder;
using Tests::Scheduled;

class CommsComponent : public Tests::LinkTest {
  protected:
    void handle(NS::Selector selector, std::string_view action) {
        receiver->setTarget_selector_for(recorder, selector, NS::str(action));
    }
    void send(std::string_view action, const NS::Ref<NS::Array>& data = NS::make<NS::Array>()) {
        sender->sendAction_data_to(NS::str(action), *data, receiver->port());
    }
    // Everything sent before it has been looked at once this has arrived.
    bool pumpToEnd() {
        const auto marker = NS::make<LinkRecorder>();
        receiver->setTarget_selector_for(marker, LinkRecorder::kNothing, NS::str("ext_emptytrash"));
        send("ext_emptytrash");
        return pump([&] { return marker->calls > 0; });
    }
    void deliver(std::initializer_list<NS::Ref<NS::Object>> components,
                 NS::RefPtr<NS::MachPort> replyPort = nullptr) {
        receiver->handlePortMessage(
            NS::make<NS::PortMessage>(replyPort, NS::Array::arrayWithObjects(components)));
    }

    Scheduled<QVExtensionCommsComponent> receiver{NS::str("test.receiver")};
    Scheduled<QVExtensionCommsComponent> sender{NS::str("test.sender")};
    NS::Ref<LinkRecorder> recorder = NS::make<LinkRecorder>();
};

TEST_F(CommsComponent, KnowsSixteenActionsInTheirOrder) {
    const std::array<std::string_view, 16> expected = {
        "ext_alive",       "ext_req_userinfo",   "ext_bc_userinfo", "ext_share",
        "ext_show_props",  "ext_refresh_folder", "ext_emptytrash",  "ext_movetotrash",
        "ext_trashdelete", "ext_trashrestore",   "ext_init",        "ext_serv_shtd",
        "ext_obs_beg",     "ext_obs_end",        "ext_act_beg",     "ext_act_end"};
    ASSERT_EQ(std::size(kParseRoutines), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(kParseRoutines[i].action, expected[i]);
    }
}

TEST_F(CommsComponent, FindsTheParseRoutineOfEachActionByItsSelector) {
    for (const QVExtensionParseRoutine& entry : kParseRoutines) {
        const bool observing = entry.action == "ext_obs_beg" || entry.action == "ext_obs_end";
        const std::string_view expected =
            entry.action == "ext_alive" ? "parseExtensionAlive:invocation:senderPort:"
            : observing                 ? "parseObservingStatus:invocation:senderPort:"
                                        : "parseArchievedData:invocation:senderPort:";
        EXPECT_EQ(entry.routine.name, expected) << entry.action;
        EXPECT_NE(receiver->methodForSelector(entry.routine), nullptr) << entry.action;
    }
}

TEST_F(CommsComponent, RegistersItsPortUnderItsName) {
    const auto found =
        NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str("test.receiver"));
    ASSERT_TRUE(found);
    EXPECT_TRUE(found->isEqual(receiver->port().get()));
    EXPECT_EQ(receiver->portName()->utf8(), "test.receiver");
}

TEST_F(CommsComponent, GivesItsNameUpWhenItGoes) {
    receiver.end();
    EXPECT_FALSE(NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str("test.receiver")));
}

TEST_F(CommsComponent, RunsOnWhenItsNameIsTaken) {
    const auto second = NS::make<QVExtensionCommsComponent>(NS::str("test.receiver"));
    second->setTarget_selector_for(recorder, LinkRecorder::kReceived, NS::str("ext_share"));
    second->sendAction_data_to(NS::str("ext_obs_beg"), *payload({archived(NS::str("/"))}),
                               receiver->port());
    handle(LinkRecorder::kReceivedFrom, "ext_obs_beg");
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    receiver->sendAction_data_to(NS::str("ext_share"), *payload({archived(NS::str("/a"))}),
                                 recorder->ports[0]);
    EXPECT_TRUE(pump([&] { return recorder->calls == 2; }));
    unschedule(*second);
}

TEST_F(CommsComponent, HandsTheUnarchivedPayloadToTheHandler) {
    handle(LinkRecorder::kReceived, "ext_share");
    send("ext_share", payload({archived(NS::str("/Docs/a.txt"))}));
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_TRUE(recorder->objects[0]->isEqual(NS::str("/Docs/a.txt").get()));
}

TEST_F(CommsComponent, HandsANilPayloadToTheHandler) {
    handle(LinkRecorder::kReceived, "ext_share");
    send("ext_share", payload({archived(nullptr)}));
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_FALSE(recorder->objects[0]);
}

TEST_F(CommsComponent, SendsItsOwnPortToAnswerTo) {
    handle(LinkRecorder::kReceivedPort, "ext_alive");
    send("ext_alive");
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_TRUE(recorder->ports[0]->isEqual(sender->port().get()));
}

TEST_F(CommsComponent, HandsTheObservedPathAndTheReplyPortToTheHandler) {
    handle(LinkRecorder::kReceivedFrom, "ext_obs_beg");
    send("ext_obs_beg", payload({archived(NS::str("/"))}));
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_TRUE(recorder->objects[0]->isEqual(NS::str("/").get()));
    EXPECT_TRUE(recorder->ports[0]->isEqual(sender->port().get()));
}

TEST_F(CommsComponent, IgnoresFurtherComponentsOfAnObservedPath) {
    handle(LinkRecorder::kReceivedFrom, "ext_obs_end");
    send("ext_obs_end", payload({archived(NS::str("/a")), bytes("no archive")}));
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    EXPECT_TRUE(recorder->objects[0]->isEqual(NS::str("/a").get()));
}

TEST_F(CommsComponent, IgnoresThePayloadOfAnAnnouncement) {
    handle(LinkRecorder::kReceivedPort, "ext_alive");
    send("ext_alive", payload({bytes("no archive")}));
    EXPECT_TRUE(pump([&] { return recorder->calls == 1; }));
}

TEST_F(CommsComponent, DropsAKnownActionWithoutAHandler) {
    handle(LinkRecorder::kNothing, "ext_act_end");
    testing::internal::CaptureStderr();
    send("ext_act_beg");
    EXPECT_TRUE(pumpToEnd());
    EXPECT_EQ(recorder->calls, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(CommsComponent, KeepsAHandlerOfAnUnknownActionButNeverCallsIt) {
    handle(LinkRecorder::kNothing, "ext_other");
    send("ext_other");
    EXPECT_TRUE(pumpToEnd());
    EXPECT_EQ(recorder->calls, 0);
    EXPECT_TRUE(receiver->actions()->objectForKey("ext_other"));
}

TEST_F(CommsComponent, DropsAnActionThatIsNotUtf8) {
    handle(LinkRecorder::kNothing, "ext_share");
    deliver({bytes("ext_share\xFF")});
    EXPECT_EQ(recorder->calls, 0);
}

TEST_F(CommsComponent, DropsAMessageWithoutComponents) {
    deliver({});
    EXPECT_EQ(recorder->calls, 0);
}

TEST_F(CommsComponent, CallsOnlyTheLatestHandlerOfAnAction) {
    const auto later = NS::make<LinkRecorder>();
    handle(LinkRecorder::kReceived, "ext_init");
    receiver->setTarget_selector_for(later, LinkRecorder::kReceived, NS::str("ext_init"));
    send("ext_init", payload({archived(NS::str("/Volumes/Drive"))}));
    ASSERT_TRUE(pump([&] { return later->calls == 1; }));
    EXPECT_EQ(recorder->calls, 0);
}

TEST_F(CommsComponent, CallsAHandlerWithoutPayloadWithItsLastArgument) {
    handle(LinkRecorder::kReceived, "ext_share");
    send("ext_share");
    send("ext_share", payload({archived(NS::str("/a"))}));
    send("ext_share");
    ASSERT_TRUE(pump([&] { return recorder->calls == 3; }));
    EXPECT_FALSE(recorder->objects[0]);
    EXPECT_TRUE(recorder->objects[1]->isEqual(NS::str("/a").get()));
    EXPECT_EQ(recorder->objects[2], recorder->objects[1]);
}

TEST_F(CommsComponent, KeepsAHandlersArgumentsUntilTheNextMessage) {
    handle(LinkRecorder::kReceived, "ext_share");
    send("ext_share", payload({archived(NS::str("/a"))}));
    ASSERT_TRUE(pump([&] { return recorder->calls == 1; }));
    const NS::RefPtr<NS::Object> argument = recorder->objects[0];
    recorder->objects.clear();
    EXPECT_EQ(argument->referenceCount(), 2U); // this test's and the handler's
    send("ext_share", payload({archived(nullptr)}));
    ASSERT_TRUE(pump([&] { return recorder->calls == 2; }));
    EXPECT_EQ(argument->referenceCount(), 1U);
}

TEST_F(CommsComponent, KeepsAHandlersTargetAlive) {
    const auto references = recorder->referenceCount();
    handle(LinkRecorder::kReceived, "ext_share");
    EXPECT_EQ(recorder->referenceCount(), references + 1);
}

TEST_F(CommsComponent, RaisesForATargetThatDoesNotRespond) {
    EXPECT_THROW(handle({"missing:"}, "ext_share"), NS::Exception);
}

TEST_F(CommsComponent, RaisesForAComponentThatIsNoArchive) {
    handle(LinkRecorder::kReceived, "ext_share");
    EXPECT_THROW(deliver({bytes("ext_share"), bytes("no archive")}), NS::Exception);
}

TEST_F(CommsComponent, RaisesForMoreComponentsThanTheHandlerHasParameters) {
    handle(LinkRecorder::kReceived, "ext_share");
    try {
        deliver({bytes("ext_share"), archived(NS::str("/a")), archived(NS::str("/b"))});
        FAIL() << "nothing was raised";
    } catch (const NS::Exception& exception) {
        EXPECT_EQ(exception.name()->utf8(), NS::kInvalidArgumentException);
    }
    EXPECT_EQ(recorder->calls, 0);
}

TEST_F(CommsComponent, LosesAMessageToADeadPortWithoutNotice) {
    const auto gone =
        NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str("test.receiver"));
    receiver.end();
    sender->sendAction_data_to(NS::str("ext_share"), *payload({archived(NS::str("/a"))}), gone);
    EXPECT_FALSE(gone->isValid());
}

TEST_F(CommsComponent, SendsNothingToANilPort) {
    sender->sendAction_data_to(NS::str("ext_share"), *payload({}), nullptr);
    EXPECT_TRUE(pumpToEnd());
}

TEST_F(CommsComponent, LosesWhatDoesNotFitTheQueueAndNothingElse) {
    handle(LinkRecorder::kReceived, "ext_share");
    const int sent = 5000;
    for (int i = 0; i < sent; ++i) {
        send("ext_share", payload({archived(NS::Number::numberWithInt(i))}));
    }
    while (NS::RunLoop::currentRunLoop()->serveReady()) {
    }
    ASSERT_GE(recorder->calls, 256);
    EXPECT_LT(recorder->calls, sent);
    for (int i = 0; i < recorder->calls; ++i) {
        ASSERT_EQ(NS::longLongValue(recorder->objects[static_cast<std::size_t>(i)]), i);
    }
    EXPECT_TRUE(pumpToEnd());
}

} // namespace
