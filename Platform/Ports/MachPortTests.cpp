#include "Platform/Ports/MachPort.h"

#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/Testing/Descriptors.h"
#include "Platform/Ports/Testing/PortFixture.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <set>
#include <sys/mman.h>

namespace {

using Tests::TestPort;

// More bytes than a component may have, without the memory for them.
class Pages final : public NS::Object {
  public:
    static constexpr std::size_t size = NS::PortLimits::kComponent + 1;

    ~Pages() override { ::munmap(address, size); }

    void* address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
};

class MachPort : public Tests::PortTest {
  protected:
    // Whether a peer has sent back "last words", which then wait for the receiver unread.
    bool echoesLastWords(const NS::RefPtr<NS::MachPort>& peer, const TestPort& receiver) {
        // Once this second port has its echo, the peer has sent the first one too.
        TestPort witness;
        return send(peer, {"last words"}, receiver.port) && send(peer, {"x"}, witness.port) &&
               pump([&] { return witness.collector->messages.size() == 1; });
    }
};

TEST_F(MachPort, DeliversAMessageWholeWithItsComponentsInOrder) {
    TestPort receiver;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    EXPECT_TRUE(send(lookUp("receiver"), {"first", "", std::string("\0\xFF", 2)}));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    ASSERT_EQ(receiver.collector->messages[0]->components()->count(), 3U);
    EXPECT_EQ(receiver.collector->text(0, 0), "first");
    EXPECT_EQ(receiver.collector->text(0, 1), "");
    EXPECT_EQ(receiver.collector->text(0, 2), std::string("\0\xFF", 2));
    EXPECT_EQ(receiver.collector->messages[0]->msgid(), 0U);
}

TEST_F(MachPort, DeliversAMessageWithoutComponents) {
    TestPort receiver;
    EXPECT_TRUE(send(receiver.port, {}));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_EQ(receiver.collector->messages[0]->components()->count(), 0U);
}

TEST_F(MachPort, DeliversToAPortOfItsOwnProcessWithoutAName) {
    TestPort receiver;
    TestPort sender;
    EXPECT_TRUE(send(receiver.port, {"x"}, sender.port));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_TRUE(receiver.collector->messages[0]->sendPort()->isEqual(sender.port.get()));
}

TEST_F(MachPort, NeverBlocksAndLosesOnlyWhatDoesNotFitTheQueue) {
    TestPort receiver(false);
    const auto lost = NS::portDropCount(NS::PortDrop::kQueueFull);
    std::size_t queued = 0;
    while (send(receiver.port, {std::to_string(queued)})) {
        ++queued;
        ASSERT_LT(queued, 1'000'000U);
    }
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kQueueFull), lost + 1);
    receiver.schedule();
    serveAll();
    ASSERT_EQ(receiver.collector->messages.size(), queued);
    for (std::size_t i = 0; i < queued; ++i) {
        ASSERT_EQ(receiver.collector->text(i), std::to_string(i));
    }
    EXPECT_TRUE(send(receiver.port, {"room again"}));
}

TEST_F(MachPort, LetsTwoHundredAndFiftySixMessagesWaitBeforeTheReceiverTakesThePeerIn) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    peer.signal(SIGSTOP);
    ASSERT_TRUE(peer.waitForState('T'));
    TestPort own;
    const auto port = lookUp("peer");
    ASSERT_TRUE(port);
    for (int i = 0; i < 256; ++i) {
        ASSERT_TRUE(send(port, {std::to_string(i), std::string(300, 'x')}, own.port)) << i;
    }
    peer.signal(SIGCONT);
    ASSERT_TRUE(pump([&] { return own.collector->messages.size() == 256; }));
    EXPECT_EQ(own.collector->text(255), "255");
}

TEST_F(MachPort, CarriesMessagesOfEverySizeAroundTheWayTheyTravel) {
    TestPort receiver;
    const std::size_t limit = NS::PortLimits::kInlineBody;
    const std::vector<std::size_t> sizes{0, 1, limit - 9, limit - 8, limit - 7, limit * 3};
    for (const std::size_t size : sizes) {
        ASSERT_TRUE(send(receiver.port, {std::string(size, 's')})) << size;
    }
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == sizes.size(); }));
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        EXPECT_EQ(receiver.collector->text(i), std::string(sizes[i], 's'));
    }
}

TEST_F(MachPort, CarriesAThousandComponents) {
    TestPort receiver;
    std::vector<std::string> texts;
    for (int i = 0; i < 1000; ++i) {
        texts.push_back(std::to_string(i));
    }
    ASSERT_TRUE(send(receiver.port, texts));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_EQ(receiver.collector->text(0, 999), "999");
}

TEST_F(MachPort, CarriesAMessageOf256MiB) {
    TestPort receiver;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    std::vector<std::byte> bytes(NS::PortLimits::kComponent);
    bytes.front() = std::byte{1};
    bytes.back() = std::byte{2};
    const auto large = NS::Data::dataWithVector(std::move(bytes));
    ASSERT_TRUE(lookUp("receiver")
                    ->sendBeforeDate_components_from_reserved(
                        NS::Date::date(), *NS::Array::arrayWithObjects({large}), nullptr, 0));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    const auto received =
        NS::cast<NS::Data>(receiver.collector->messages[0]->components()->objectAtIndex(0));
    EXPECT_TRUE(received->isEqual(large.get()));
}

TEST_F(MachPort, RefusesAComponentBeyondTheLimit) {
    TestPort receiver;
    const auto pages = NS::make<Pages>();
    const auto tooLarge = NS::Data::dataWithBytesNoCopy(
        {static_cast<const std::byte*>(pages->address), Pages::size}, pages);
    const auto before = NS::portDropCount(NS::PortDrop::kTooLarge);
    EXPECT_FALSE(receiver.port->sendBeforeDate_components_from_reserved(
        NS::Date::date(), *NS::Array::arrayWithObjects({tooLarge}), nullptr, 0));
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kTooLarge), before + 1);
}

TEST_F(MachPort, CanBeAnsweredWhenItCameWithAMessage) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    TestPort own;
    ASSERT_TRUE(send(lookUp("peer"), {"hello"}, own.port));
    ASSERT_TRUE(pump([&] { return own.collector->messages.size() == 1; }));
    const auto kept = own.collector->messages[0]->sendPort();
    ASSERT_TRUE(kept);
    ASSERT_TRUE(send(kept, {"again"}, own.port));
    ASSERT_TRUE(pump([&] { return own.collector->messages.size() == 2; }));
    EXPECT_EQ(own.collector->text(1), "again");
}

TEST_F(MachPort, CanBeAnsweredOnAnotherPortThanItReached) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    TestPort own;
    TestPort other;
    ASSERT_TRUE(send(lookUp("peer"), {"hello"}, own.port));
    ASSERT_TRUE(pump([&] { return own.collector->messages.size() == 1; }));
    ASSERT_TRUE(send(own.collector->messages[0]->sendPort(), {"to the other"}, other.port));
    ASSERT_TRUE(pump([&] { return other.collector->messages.size() == 1; }));
    EXPECT_EQ(other.collector->text(0), "to the other");
    EXPECT_EQ(own.collector->messages.size(), 1U);
}

TEST_F(MachPort, IsTheSameForAllMessagesOfAPeerAndForItsName) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    TestPort own;
    ASSERT_TRUE(send(lookUp("peer"), {"1"}, own.port));
    ASSERT_TRUE(send(lookUp("peer"), {"2"}, own.port));
    ASSERT_TRUE(pump([&] { return own.collector->messages.size() == 2; }));
    const auto first = own.collector->messages[0]->sendPort();
    const auto second = own.collector->messages[1]->sendPort();
    EXPECT_TRUE(first->isEqual(second.get()));
    EXPECT_EQ(first->hash(), second->hash());
    EXPECT_TRUE(lookUp("peer")->isEqual(first.get()));
    EXPECT_FALSE(first->isEqual(own.port.get()));
}

TEST_F(MachPort, DescribesItself) {
    const auto port = NS::MachPort::port();
    EXPECT_THAT(port->description()->utf8(),
                testing::MatchesRegex("<NSMachPort: 0x[0-9a-f]+> [0-9a-f]{8}"));
}

TEST_F(MachPort, GetsNoReplyPortWhereTheSenderGaveNone) {
    TestPort receiver;
    ASSERT_TRUE(send(receiver.port, {"x"}));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_FALSE(receiver.collector->messages[0]->sendPort());
}

TEST_F(MachPort, IsInvalidAtOnceWhenItsProcessDied) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    const auto port = lookUp("peer");
    EXPECT_TRUE(port->isValid());
    peer.signal(SIGKILL);
    ASSERT_EQ(peer.waitForExit(), 128 + SIGKILL);
    EXPECT_FALSE(port->isValid());
    EXPECT_FALSE(send(port, {"x"}));
}

TEST_F(MachPort, StaysInvalidWhenAnotherProcessTakesTheName) {
    auto peer = startPeer("peer", "first");
    ASSERT_TRUE(says(peer, "registered"));
    const auto port = lookUp("peer");
    peer.signal(SIGKILL);
    ASSERT_TRUE(peer.waitForExit());
    auto next = startPeer("peer", "next");
    ASSERT_TRUE(says(next, "registered"));
    EXPECT_FALSE(port->isValid());
    EXPECT_TRUE(lookUp("peer")->isValid());
    EXPECT_FALSE(lookUp("peer")->isEqual(port.get()));
}

TEST_F(MachPort, StaysValidWhileItsProcessIsStopped) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    const auto port = lookUp("peer");
    peer.signal(SIGSTOP);
    ASSERT_TRUE(peer.waitForState('T'));
    EXPECT_TRUE(port->isValid());
    EXPECT_TRUE(lookUp("peer"));
}

TEST_F(MachPort, DeliversWhatAPeerSentBeforeItDied) {
    TestPort own(false);
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    const auto port = lookUp("peer");
    ASSERT_TRUE(echoesLastWords(port, own));
    peer.signal(SIGKILL);
    ASSERT_TRUE(peer.waitForExit());
    own.schedule();
    ASSERT_TRUE(pump([&] { return own.collector->messages.size() == 1; }));
    EXPECT_EQ(own.collector->text(0), "last words");
    EXPECT_FALSE(own.collector->messages[0]->sendPort()->isValid());
}

TEST_F(MachPort, DeliversWhatAPeerSentBeforeItDiedWithMessagesUnread) {
    TestPort own(false);
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    const auto port = lookUp("peer");
    ASSERT_TRUE(echoesLastWords(port, own));
    peer.signal(SIGSTOP);
    ASSERT_TRUE(peer.waitForState('T'));
    ASSERT_TRUE(send(port, {"never read"}, own.port));
    peer.signal(SIGKILL);
    ASSERT_TRUE(peer.waitForExit());
    own.schedule();
    serveAll();
    ASSERT_EQ(own.collector->messages.size(), 1U);
    EXPECT_EQ(own.collector->text(0), "last words");
}

TEST_F(MachPort, KeepsTheOrderOfItsMessagesOverAllLookUpsOfAPeer) {
    TestPort receiver;
    TestPort sender;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    const auto first = lookUp("receiver");
    const auto second = lookUp("receiver");
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(send(i % 3 == 0 ? first : second, {std::to_string(i)}, sender.port));
    }
    serveAll();
    ASSERT_EQ(receiver.collector->messages.size(), 100U);
    for (std::size_t i = 0; i < 100; ++i) {
        ASSERT_EQ(receiver.collector->text(i), std::to_string(i));
    }
}

TEST_F(MachPort, HoldsOneConnectionForAllLookUpsOfAPeer) {
    TestPort receiver;
    TestPort sender;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    ASSERT_TRUE(send(lookUp("receiver"), {"x"}, sender.port));
    serveAll();
    const std::size_t before = Tests::openDescriptors();
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(send(lookUp("receiver"), {"x"}, sender.port));
        serveAll();
    }
    EXPECT_EQ(Tests::openDescriptors(), before);
    EXPECT_EQ(receiver.collector->messages.size(), 51U);
}

TEST_F(MachPort, CannotBeAnsweredOnAPortOfAnotherProcess) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    TestPort own;
    const auto before = NS::portDropCount(NS::PortDrop::kNoReplyRoute);
    EXPECT_FALSE(send(own.port, {"x"}, lookUp("peer")));
    EXPECT_FALSE(send(lookUp("peer"), {"x"}, lookUp("peer")));
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kNoReplyRoute), before + 2);
}

TEST_F(MachPort, IsNotTakenForAPeerThatClaimsItsIdentity) {
    TestPort own;
    TestPort other;
    ASSERT_TRUE(registerPort(own, "own"));
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    // The peer's socket under the identity of the port of this process.
    const std::string ownEntry = Tests::contentsOf(folder() / "own");
    const std::string peerEntry = Tests::contentsOf(folder() / "peer");
    std::ofstream(folder() / "forged") << peerEntry.substr(0, 33) << ownEntry.substr(33);
    const auto forged = lookUp("forged");
    ASSERT_TRUE(forged);
    EXPECT_EQ(forged->hash(), own.port->hash());
    EXPECT_FALSE(forged->isEqual(own.port.get()));
}

TEST_F(MachPort, RaisesForAComponentThatIsNoData) {
    TestPort receiver;
    const auto wrong = NS::Array::arrayWithObjects({NS::str("text")});
    EXPECT_THROW((void)receiver.port->sendBeforeDate_components_from_reserved(NS::Date::date(),
                                                                              *wrong, nullptr, 0),
                 NS::Exception);
}

TEST_F(MachPort, LeavesItsDescriptorsToNoOtherProgram) {
    std::set<int> before;
    const auto open = [] {
        std::set<int> descriptors;
        for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
            descriptors.insert(std::stoi(each.path().filename()));
        }
        return descriptors;
    };
    before = open();
    TestPort receiver;
    TestPort sender;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    const auto found = lookUp("receiver");
    ASSERT_TRUE(send(found, {"x"}, sender.port));
    ASSERT_TRUE(send(receiver.port, {"x"}, sender.port));
    serveAll();
    for (const int descriptor : open()) {
        const int flags = ::fcntl(descriptor, F_GETFD); // fails for the folder that was listed
        EXPECT_TRUE(flags < 0 || before.contains(descriptor) || (flags & FD_CLOEXEC) != 0)
            << descriptor;
    }
    EXPECT_GT(open().size(), before.size());
}

TEST_F(MachPort, TakesNoMessageWithoutADelegate) {
    TestPort receiver;
    receiver.port->setDelegate(nullptr);
    const auto before = NS::portDropCount(NS::PortDrop::kNoDelegate);
    ASSERT_TRUE(send(receiver.port, {"x"}));
    EXPECT_TRUE(pump([&] { return NS::portDropCount(NS::PortDrop::kNoDelegate) == before + 1; }));
}

TEST_F(MachPort, KeepsItsDelegateWhileItHandlesAMessage) {
    TestPort receiver;
    bool ended = false;
    receiver.collector->onMessage = [&](const NS::PortMessage&) {
        receiver.port->setDelegate(nullptr);
        receiver.collector = NS::make<Tests::Collector>();
        ended = true;
    };
    ASSERT_TRUE(send(receiver.port, {"x"}));
    EXPECT_TRUE(pump([&] { return ended; }));
}

TEST_F(MachPort, MayBeLetGoByItsOwnHandler) {
    TestPort receiver;
    bool ended = false;
    receiver.collector->onMessage = [&](const NS::PortMessage&) {
        receiver.end();
        ended = true;
    };
    ASSERT_TRUE(send(receiver.port, {"1"}));
    ASSERT_TRUE(send(receiver.port, {"2"}));
    ASSERT_TRUE(pump([&] { return ended; }));
    serveAll();
    EXPECT_EQ(receiver.collector->messages.size(), 1U);
}

TEST_F(MachPort, GoesOnWithTheNextMessageAfterAnException) {
    TestPort receiver;
    receiver.collector->onMessage = [&](const NS::PortMessage&) {
        if (receiver.collector->messages.size() == 1) {
            NS::Exception::raise(NS::kGenericException, "raised by a handler");
        }
    };
    ASSERT_TRUE(send(receiver.port, {"1"}));
    ASSERT_TRUE(send(receiver.port, {"2"}));
    EXPECT_THROW(pump([&] { return receiver.collector->messages.size() == 2; }), NS::Exception);
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 2; }));
    EXPECT_EQ(receiver.collector->text(1), "2");
}

TEST_F(MachPort, LeavesNoDescriptorBehind) {
    TestPort receiver;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    const std::size_t before = Tests::openDescriptors();
    for (int i = 0; i < 200; ++i) {
        TestPort sender;
        ASSERT_TRUE(send(lookUp("receiver"), {std::string(200'000, 'x')}, sender.port));
        ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
        receiver.collector->messages.clear();
    }
    EXPECT_TRUE(pump([&] { return Tests::openDescriptors() <= before; }));
}

TEST_F(MachPort, TurnsPeersAwayWhenTheProcessHasNoDescriptorsLeft) {
    TestPort receiver;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    const auto waiting = lookUp("receiver");
    ASSERT_TRUE(waiting);
    const auto before = NS::portDropCount(NS::PortDrop::kTooManyPeers);
    {
        const Tests::NoDescriptors none;
        serveAll();
    }
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kTooManyPeers), before + 1);
    EXPECT_FALSE(waiting->isValid());
    ASSERT_TRUE(send(lookUp("receiver"), {"x"}));
    EXPECT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
}

TEST_F(MachPort, NeedsNoThread) {
    const auto threads = [] {
        const std::string status = Tests::contentsOf("/proc/self/status");
        return status.substr(status.find("Threads:"), 12);
    };
    const std::string before = threads(); // a sanitiser may have one of its own
    TestPort receiver;
    ASSERT_TRUE(registerPort(receiver, "receiver"));
    ASSERT_TRUE(send(lookUp("receiver"), {"x"}));
    ASSERT_TRUE(pump([&] { return receiver.collector->messages.size() == 1; }));
    EXPECT_EQ(threads(), before);
}

} // namespace
