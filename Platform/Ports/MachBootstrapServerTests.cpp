#include "Platform/Ports/MachBootstrapServer.h"

#include "Platform/Ports/Testing/PortFixture.h"
#include "Platform/Ports/linux/Connection.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Tests::TestPort;

class BootstrapServer : public Tests::PortTest {
  protected:
    std::size_t entries() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder()), fs::directory_iterator()));
    }
};

TEST_F(BootstrapServer, FindsAPortByItsName) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    EXPECT_TRUE(lookUp("a.name")->isEqual(port.port.get()));
    EXPECT_FALSE(lookUp("another.name"));
}

TEST_F(BootstrapServer, TakesNamesLongerThanASocketsAddress) {
    TestPort port;
    const std::string name(200, 'n');
    ASSERT_TRUE(registerPort(port, name));
    EXPECT_TRUE(lookUp(name));
}

TEST_F(BootstrapServer, WorksInAFolderWithALongPath) {
    const fs::path deep = folders.root() / std::string(200, 'd');
    fs::create_directories(deep);
    ::setenv("XDG_RUNTIME_DIR", deep.c_str(), 1);
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    EXPECT_TRUE(lookUp("a.name"));
}

TEST_F(BootstrapServer, RefusesNamesThatAreNone) {
    TestPort port;
    for (const std::string& name : {std::string(), std::string(201, 'n'), std::string("a/b"),
                                    std::string(".hidden"), std::string("..")}) {
        EXPECT_FALSE(registerPort(port, name)) << name;
        EXPECT_FALSE(lookUp(name)) << name;
    }
}

TEST_F(BootstrapServer, KeepsANameForItsLiveOwner) {
    TestPort owner;
    TestPort other;
    ASSERT_TRUE(registerPort(owner, "a.name"));
    EXPECT_FALSE(registerPort(other, "a.name"));
    EXPECT_TRUE(lookUp("a.name")->isEqual(owner.port.get()));
}

TEST_F(BootstrapServer, KeepsANameForALiveOwnerInAnotherProcessEvenAStoppedOne) {
    auto peer = startPeer("a.name");
    ASSERT_TRUE(says(peer, "registered"));
    TestPort other;
    EXPECT_FALSE(registerPort(other, "a.name"));
    peer.signal(SIGSTOP);
    ASSERT_TRUE(peer.waitForState('T'));
    EXPECT_FALSE(registerPort(other, "a.name"));
    EXPECT_FALSE(names()->removePortForName(*NS::str("a.name")));
}

TEST_F(BootstrapServer, GivesANameLeftBehindToTheNext) {
    {
        auto peer = startPeer("a.name");
        ASSERT_TRUE(says(peer, "registered"));
        peer.signal(SIGKILL);
        ASSERT_TRUE(peer.waitForExit());
    }
    EXPECT_FALSE(lookUp("a.name"));
    TestPort port;
    EXPECT_TRUE(registerPort(port, "a.name"));
    EXPECT_TRUE(lookUp("a.name"));
}

TEST_F(BootstrapServer, LetsExactlyOneOfManyWinARace) {
    std::vector<std::unique_ptr<Tests::Process>> peers;
    for (int i = 0; i < 12; ++i) {
        const std::string file = "peer" + std::to_string(i);
        peers.push_back(std::make_unique<Tests::Process>(
            PEER_PROGRAM, std::vector<std::string>{"echo", "a.name"},
            folders.root() / (file + ".out"), folders.root() / (file + ".err")));
    }
    for (const auto& peer : peers) {
        ASSERT_TRUE(Tests::waitUntil([&] { return peer->output().ends_with('\n'); }));
    }
    EXPECT_EQ(std::ranges::count(peers, "registered\n", [](auto& p) { return p->output(); }), 1);
    EXPECT_TRUE(lookUp("a.name"));
}

TEST_F(BootstrapServer, GivesANameUpOnRequest) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    EXPECT_TRUE(names()->removePortForName(*NS::str("a.name")));
    EXPECT_FALSE(lookUp("a.name"));
    EXPECT_FALSE(names()->removePortForName(*NS::str("a.name")));
    EXPECT_EQ(entries(), 0U);
}

TEST_F(BootstrapServer, KeepsWhoFoundAPortBeforeItsNameWasGivenUp) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    const auto found = lookUp("a.name");
    ASSERT_TRUE(send(found, {"x"}));
    ASSERT_TRUE(names()->removePortForName(*NS::str("a.name")));
    EXPECT_TRUE(found->isValid());
    serveAll();
    EXPECT_EQ(port.collector->messages.size(), 1U);
}

TEST_F(BootstrapServer, GivesAPortAsManyNamesAsItAsksFor) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    ASSERT_TRUE(registerPort(port, "another.name"));
    EXPECT_TRUE(lookUp("a.name")->isEqual(lookUp("another.name").get()));
    ASSERT_TRUE(names()->removePortForName(*NS::str("a.name")));
    EXPECT_FALSE(lookUp("a.name"));
    EXPECT_TRUE(lookUp("another.name"));
}

TEST_F(BootstrapServer, RegistersNoPortOfAnotherProcess) {
    auto peer = startPeer("peer");
    ASSERT_TRUE(says(peer, "registered"));
    EXPECT_FALSE(
        names()->registerPort_name(NS::Ref<NS::MachPort>(*lookUp("peer")), *NS::str("a.name")));
    EXPECT_FALSE(lookUp("a.name"));
}

TEST_F(BootstrapServer, LeavesANameThatSomebodyElseHasByNow) {
    auto former = std::make_unique<TestPort>();
    ASSERT_TRUE(registerPort(*former, "a.name"));
    ASSERT_TRUE(fs::remove(folder() / "a.name"));
    TestPort next;
    ASSERT_TRUE(registerPort(next, "a.name"));
    former.reset();
    ASSERT_TRUE(lookUp("a.name"));
    EXPECT_TRUE(lookUp("a.name")->isEqual(next.port.get()));
}

TEST_F(BootstrapServer, LeavesWhatItDidNotMake) {
    fs::create_directories(folder() / "sub");
    fs::permissions(folder(), fs::perms::owner_all);
    std::ofstream(folder() / "notes") << "a person's own";
    fs::create_symlink(folder() / "notes", folder() / "link");
    ASSERT_EQ(::mkfifo((folder() / "pipe").c_str(), 0600), 0);
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    EXPECT_EQ(entries(), 6U);
    for (const char* name : {"sub", "link", "pipe"}) {
        EXPECT_FALSE(registerPort(port, name)) << name;
        EXPECT_FALSE(lookUp(name)) << name;
    }
    EXPECT_EQ(Tests::contentsOf(folder() / "notes"), "a person's own");
}

TEST_F(BootstrapServer, TakesItsNamesAwayWhenTheProcessExits) {
    const auto registerAndExit = [&] {
        TestPort port; // alive when the process ends: exit() leaves no scope
        std::exit(registerPort(port, "a.name") && entries() == 2 ? 0 : 1);
    };
    EXPECT_EXIT(registerAndExit(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(entries(), 0U);
}

TEST_F(BootstrapServer, TakesItsNamesAwayWhenASignalEndsTheProcessAndEndsByThatSignal) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        auto peer = startPeer("a.name", "peer" + std::to_string(number));
        ASSERT_TRUE(says(peer, "registered"));
        ASSERT_EQ(entries(), 2U);
        // The thread sanitiser's runtime puts off a signal that meets the program at work, and may
        // then forget it on the way into the wait.
        ASSERT_TRUE(peer.waitForState('S'));
        peer.signal(number);
        EXPECT_EQ(peer.waitForExit(), 128 + number);
        EXPECT_EQ(entries(), 0U);
    }
}

TEST_F(BootstrapServer, TakesItsNamesAwayBeforeAnEarlierHandlerRuns) {
    auto peer = startPeer("a.name", "peer", "goodbye");
    ASSERT_TRUE(says(peer, "registered"));
    ASSERT_TRUE(peer.waitForState('S'));
    peer.signal(SIGABRT);
    EXPECT_EQ(peer.waitForExit(), 128 + SIGABRT);
    EXPECT_EQ(entries(), 0U);
    EXPECT_NE(peer.output().find("goodbye"), std::string::npos);
}

TEST_F(BootstrapServer, MakesNoFolderToLookIntoIt) {
    EXPECT_FALSE(lookUp("a.name"));
    EXPECT_FALSE(fs::exists(folder()));
}

TEST_F(BootstrapServer, GivesANameUpWithItsPort) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    port.end();
    EXPECT_FALSE(lookUp("a.name"));
    EXPECT_EQ(entries(), 0U);
}

TEST_F(BootstrapServer, KeepsANameWhenAForkedChildExits) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    EXPECT_EXIT(std::exit(0), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(lookUp("a.name"));
}

TEST_F(BootstrapServer, TidiesUpWhatDeadProcessesLeftBehind) {
    {
        auto peer = startPeer("a.dead.name");
        ASSERT_TRUE(says(peer, "registered"));
        peer.signal(SIGKILL);
        ASSERT_TRUE(peer.waitForExit());
    }
    ASSERT_EQ(entries(), 2U);
    TestPort port;
    ASSERT_TRUE(registerPort(port, "another.name"));
    EXPECT_EQ(entries(), 2U);
    EXPECT_FALSE(fs::exists(folder() / "a.dead.name"));
}

// The lock of one who tidies up, on the file of a name, until a timer's signal takes it away.
class SweepersLock {
  public:
    explicit SweepersLock(const fs::path& name) {
        descriptor_ = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_len = 2;
        EXPECT_EQ(::fcntl(descriptor_, F_OFD_SETLK, &range), 0);
        (void)std::signal(SIGALRM, [](int) { (void)::close(descriptor_); });
        (void)::ualarm(100'000, 0);
    }
    ~SweepersLock() {
        (void)::ualarm(0, 0);
        (void)std::signal(SIGALRM, SIG_DFL);
    }
    SweepersLock(const SweepersLock&) = delete;
    SweepersLock& operator=(const SweepersLock&) = delete;

  private:
    static inline int descriptor_ = -1;
};

TEST_F(BootstrapServer, WaitsForOneWhoTidiesUpAndIsKeptFromRunning) {
    fs::create_directories(folder());
    fs::permissions(folder(), fs::perms::owner_all);
    const SweepersLock lock(folder() / "a.name");
    TestPort port;
    EXPECT_TRUE(registerPort(port, "a.name"));
    EXPECT_TRUE(lookUp("a.name"));
}

TEST_F(BootstrapServer, LooksNothingUpInAFileThatIsNoEntry) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    const std::string sound = Tests::contentsOf(folder() / "a.name");
    for (const std::string& text :
         {std::string(), sound.substr(1), sound + "x", std::string(66, 'z'),
          "../" + sound.substr(3), std::string(100'000, '0')}) {
        std::ofstream(folder() / "forged") << text;
        EXPECT_FALSE(lookUp("forged"));
    }
}

TEST_F(BootstrapServer, MakesItsFolderForTheUserAlone) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    EXPECT_EQ(fs::status(folder()).permissions(), fs::perms::owner_all);
}

TEST_F(BootstrapServer, RefusesAFolderThatOthersCanEnter) {
    fs::create_directories(folder());
    TestPort port;
    for (const fs::perms more : {fs::perms::group_read, fs::perms::others_exec}) {
        fs::permissions(folder(), fs::perms::owner_all | more);
        EXPECT_FALSE(registerPort(port, "a.name"));
    }
    fs::permissions(folder(), fs::perms::owner_all);
    EXPECT_TRUE(registerPort(port, "a.name"));
}

TEST_F(BootstrapServer, AcceptsAFolderThatTookItsGroupFromTheOneAbove) {
    ASSERT_EQ(::chmod(folders.runtime().c_str(), 02700), 0);
    TestPort port;
    EXPECT_TRUE(registerPort(port, "a.name"));
}

TEST_F(BootstrapServer, RefusesAFolderThatIsALink) {
    fs::create_directories(folders.root() / "elsewhere");
    fs::permissions(folders.root() / "elsewhere", fs::perms::owner_all);
    fs::create_directory_symlink(folders.root() / "elsewhere", folder());
    TestPort port;
    EXPECT_FALSE(registerPort(port, "a.name"));
    EXPECT_FALSE(lookUp("a.name"));
}

TEST_F(BootstrapServer, RefusesAFileInTheFoldersPlace) {
    std::ofstream(folder()) << "x";
    TestPort port;
    EXPECT_FALSE(registerPort(port, "a.name"));
}

TEST_F(BootstrapServer, UsesTheStateFolderWhereThereIsNoRuntimeFolder) {
    ::unsetenv("XDG_RUNTIME_DIR");
    TestPort port;
    ASSERT_TRUE(registerPort(port, "quorvane.test.a.name"));
    const fs::path ofUser = "/run/user/" + std::to_string(::geteuid());
    const fs::path expected =
        fs::is_directory(ofUser) ? ofUser / "Quorvane" : folders.state() / "Quorvane" / "run";
    EXPECT_TRUE(fs::exists(expected / "quorvane.test.a.name"));
}

// Everybody but this user.
class ForeignUser : public BootstrapServer {
  protected:
    ForeignUser() { NS::setExpectedPeerUser(::geteuid() + 1); }
    ~ForeignUser() override { NS::resetExpectedPeerUser(); }
};

TEST_F(ForeignUser, IsNotConnectedTo) {
    auto peer = startPeer("a.name");
    ASSERT_TRUE(says(peer, "registered"));
    const auto before = NS::portDropCount(NS::PortDrop::kForeignUser);
    EXPECT_FALSE(lookUp("a.name"));
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kForeignUser), before + 1);
}

// For those who may become somebody else, the same with a real one, whom the folder lets through.
TEST_F(ForeignUser, IsNotLetInAlsoPastTheFolder) {
    NS::resetExpectedPeerUser();
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    const std::string socket = Tests::contentsOf(folder() / "a.name").substr(0, 32);
    const auto before = NS::portDropCount(NS::PortDrop::kForeignUser);
    ASSERT_EQ(::chmod(folder().c_str(), 0755), 0);
    ASSERT_EQ(::chmod((folder() / socket).c_str(), 0777), 0);
    const auto connectAsNobody = [&] {
        constexpr uid_t kNobody = 65534;
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        socket.copy(address.sun_path, sizeof address.sun_path - 1);
        const int end = ::socket(AF_UNIX, SOCK_SEQPACKET, 0);
        const bool connected =
            ::chdir(folder().c_str()) == 0 && (::geteuid() != 0 || ::setuid(kNobody) == 0) &&
            ::connect(end, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        ::_exit(connected ? 0 : 1);
    };
    EXPECT_EXIT(connectAsNobody(), testing::ExitedWithCode(0), "");
    serveAll();
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kForeignUser), before + (::geteuid() == 0 ? 1 : 0));
}

TEST_F(ForeignUser, IsNotLetIn) {
    TestPort port;
    ASSERT_TRUE(registerPort(port, "a.name"));
    NS::setExpectedPeerUser(::geteuid());
    const auto found = lookUp("a.name");
    ASSERT_TRUE(send(found, {"x"}));
    NS::setExpectedPeerUser(::geteuid() + 1);
    const auto before = NS::portDropCount(NS::PortDrop::kForeignUser);
    serveAll();
    EXPECT_EQ(NS::portDropCount(NS::PortDrop::kForeignUser), before + 1);
    EXPECT_FALSE(found->isValid());
    EXPECT_TRUE(port.collector->messages.empty());
}

} // namespace
