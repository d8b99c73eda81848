#include "QVFinderExtension/FinderSync.h"

#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Exception.h"
#include "QVFinderExtension/Testing/LinkFixture.h"

#include <fstream>
#include <functional>
#include <sstream>

namespace fs = std::filesystem;

namespace {

using Tests::Scheduled;

// A host in the same process; answers an announcement with what the test gives it to do.
class FakeHost final : public NS::Object {
    NS_OBJECT(FakeHost)
  public:
    void clientAlive(NS::RefPtr<NS::MachPort> port) {
        client = port;
        if (whenAlive) {
            whenAlive();
        }
    }
    void userInfoRequested() { ++requests; }

    NS::RefPtr<NS::MachPort> client;
    std::function<void()> whenAlive;
    int requests = 0;
};

constexpr NS::Method kFakeHostMethods[] = {
    NS::method<&FakeHost::clientAlive>("clientAlive:"),
    NS::method<&FakeHost::userInfoRequested>("userInfoRequested"),
};
constinit const NS::Class FakeHost::kClass{
    .name = "FakeHost", .superclass = &NS::Object::kClass, .methods = kFakeHostMethods};

// The system's clock, but the extension's pauses are noted and may be used to step in.
class NotingClock final : public NS::Clock {
  public:
    explicit NotingClock(NS::Clock& system) : system_(system) {}
    double absoluteTime() override { return system_.absoluteTime(); }
    void sleep(double seconds) override {
        sleeps.push_back(seconds);
        if (afterSleep) {
            afterSleep();
        }
    }

    std::vector<double> sleeps;
    std::function<void()> afterSleep;

  private:
    NS::Clock& system_;
};

class FinderSyncTest : public Tests::LinkTest {
  protected:
    FinderSyncTest() {
        server->setTarget_selector_for(host, {"clientAlive:"}, NS::str("ext_alive"));
        server->setTarget_selector_for(host, {"userInfoRequested"}, NS::str("ext_req_userinfo"));
        fs::create_directories(drive);
    }
    ~FinderSyncTest() override {
        // Handlers hold the extension and the extension holds the link: undone by hand here only.
        if (const auto link = extension->comms()) {
            link->actions()->removeAllObjects();
            unschedule(*link);
        }
        FI::FinderSyncController::defaultController()->setDirectoryURLs(nullptr);
    }

    void send(std::string_view action, const NS::Ref<NS::Array>& data) {
        server->sendAction_data_to(NS::str(action), *data, host->client);
    }
    void sendInit(const fs::path& path) {
        send("ext_init", payload({archived(NS::str(path.string()))}));
    }
    void sendUserInfo() {
        const auto info = NS::make<QVUserInfoItem>();
        info->setTrashCount(NS::Number::numberWithInt(3));
        send("ext_bc_userinfo", payload({archived(info)}));
    }
    void start() {
        host->whenAlive = [this] {
            sendInit(drive);
        };
        extension->init();
    }
    std::string log() const {
        std::ostringstream text;
        const fs::path logs = folders.data() / "Quorvane" / "LogDirectory";
        for (const auto& entry : fs::directory_iterator(logs)) {
            text << std::ifstream(entry.path()).rdbuf();
        }
        return text.str();
    }
    static std::vector<std::string> watchedFolders() {
        std::vector<std::string> urls;
        for (const auto& url : *FI::FinderSyncController::defaultController()->directoryURLs()) {
            urls.push_back(url->description()->utf8());
        }
        return urls;
    }
    std::string driveURL() const { return "file://" + drive.string() + "/"; }

    ScopedLoggingState logging;
    fs::path drive = folders.root() / "drive";
    NotingClock clock{NS::Clock::current()};
    NS::ScopedClock scoped{clock};
    Scheduled<QVExtensionCommsServer> server{NS::str("com.Quorvane.QVExtensionCommsServer")};
    NS::Ref<FakeHost> host = NS::make<FakeHost>();
    NS::Ref<FinderSync> extension = NS::make<FinderSync>();
};

TEST_F(FinderSyncTest, ReturnsFromItsInitialiserAfterTheTurnInWhichTheMountPathCame) {
    const double before = clock.absoluteTime();
    start();
    EXPECT_GE(clock.absoluteTime() - before, 1.0);
    EXPECT_EQ(clock.sleeps, std::vector<double>{0.10000000149011612});
    EXPECT_EQ(extension->drivePath()->utf8(), drive.string());
}

TEST_F(FinderSyncTest, WatchesTheDriveAlone) {
    start();
    EXPECT_EQ(watchedFolders(), std::vector<std::string>{driveURL()});
}

TEST_F(FinderSyncTest, LogsTheWatchedFoldersWhenItIsUp) {
    start();
    EXPECT_NE(log().find("]: received init at " + drive.string() + "\n"), std::string::npos);
    EXPECT_NE(log().find("]: initial init at {(\n    \"" + driveURL() + "\"\n)}\n"),
              std::string::npos)
        << log();
}

TEST_F(FinderSyncTest, LogsUnderItsOwnPrefix) {
    start();
    EXPECT_EQ(QVLogging::sharedInstance()->prefix()->utf8(), "FE");
}

TEST_F(FinderSyncTest, PrunesOldLogsBeforeItWritesItsOwn) {
    const fs::path logs = folders.data() / "Quorvane" / "LogDirectory";
    fs::create_directories(logs);
    for (int i = 0; i < 25; ++i) {
        std::ofstream(logs / ("FELog-old-" + std::to_string(i) + ".txt")) << "old\n";
    }
    start();
    EXPECT_EQ(std::distance(fs::directory_iterator(logs), fs::directory_iterator()), 19);
}

TEST_F(FinderSyncTest, GoesOnWaitingWhileNoMountPathComes) {
    host->whenAlive = [] {
    };
    clock.afterSleep = [this] {
        if (clock.sleeps.size() == 2) {
            EXPECT_FALSE(extension->drivePath());
            sendInit(drive);
        }
    };
    extension->init();
    EXPECT_EQ(clock.sleeps.size(), 3U);
}

TEST_F(FinderSyncTest, TakesTheAccountRecordWhileItWaits) {
    host->whenAlive = [this] {
        sendUserInfo();
    };
    clock.afterSleep = [this] {
        if (clock.sleeps.size() == 1) {
            EXPECT_TRUE(extension->storageInfo());
            EXPECT_FALSE(extension->drivePath());
            sendInit(drive);
        }
    };
    extension->init();
    EXPECT_EQ(NS::longLongValue(NS::cast<QVUserInfoItem>(extension->storageInfo())->trashCount()),
              3);
}

TEST_F(FinderSyncTest, AsksForTheAccountRecordWhenItHasTheMountPath) {
    start();
    EXPECT_TRUE(pump([&] { return host->requests == 1; }));
}

TEST_F(FinderSyncTest, ReplacesTheDriveWhenTheHostSendsAnother) {
    start();
    sendInit("/Volumes/Other");
    ASSERT_TRUE(
        pump([&] { return extension->drivePath()->isEqual(NS::str("/Volumes/Other").get()); }));
    EXPECT_EQ(watchedFolders(), std::vector<std::string>{"file:///Volumes/Other"});
    EXPECT_TRUE(pump([&] { return host->requests == 2; }));
}

TEST_F(FinderSyncTest, StoresTheMountPathAsItCame) {
    start();
    sendInit("/Volumes//Other/../x/");
    EXPECT_TRUE(pump(
        [&] { return extension->drivePath()->isEqual(NS::str("/Volumes//Other/../x/").get()); }));
}

TEST_F(FinderSyncTest, ReplacesTheAccountRecordAndLogsIt) {
    start();
    EXPECT_FALSE(extension->storageInfo());
    sendUserInfo();
    ASSERT_TRUE(pump([&] { return static_cast<bool>(extension->storageInfo()); }));
    const auto first = extension->storageInfo();
    EXPECT_NE(log().find("]: received info " + first->description()->utf8() + "\n"),
              std::string::npos);
    sendUserInfo();
    EXPECT_TRUE(pump([&] { return extension->storageInfo() != first; }));
}

TEST_F(FinderSyncTest, TakesNoRecordForARecord) {
    start();
    sendUserInfo();
    ASSERT_TRUE(pump([&] { return static_cast<bool>(extension->storageInfo()); }));
    send("ext_bc_userinfo", payload({archived(nullptr)}));
    ASSERT_TRUE(pump([&] { return !extension->storageInfo(); }));
    EXPECT_NE(log().find("]: received info (null)\n"), std::string::npos);
}

TEST_F(FinderSyncTest, KeepsARecordAsItCameWhateverItIs) {
    start();
    send("ext_bc_userinfo", payload({archived(NS::str("no record"))}));
    ASSERT_TRUE(pump([&] { return static_cast<bool>(extension->storageInfo()); }));
    EXPECT_TRUE(extension->storageInfo()->isEqual(NS::str("no record").get()));
    EXPECT_NE(log().find("]: received info no record\n"), std::string::npos);
}

TEST_F(FinderSyncTest, RaisesForAMountPathThatIsNoText) {
    start();
    send("ext_init", payload({archived(NS::Number::numberWithInt(1))}));
    EXPECT_THROW(pump([&] { return host->requests == 2; }), NS::Exception);
    EXPECT_EQ(extension->drivePath()->utf8(), drive.string());
}

TEST_F(FinderSyncTest, RaisesForAMountPathThatIsNil) {
    EXPECT_THROW(extension->extensionInit(nullptr), NS::Exception);
    EXPECT_FALSE(extension->drivePath());
}

TEST_F(FinderSyncTest, EndsTheProcessWithStatus0WhenTheHostSaysSo) {
    EXPECT_EXIT(extension->shutdown(), testing::ExitedWithCode(0), "");
}

TEST_F(FinderSyncTest, SetsNoBadges) {
    start();
    const std::string before = log();
    extension->requestBadgeIdentifierForURL(NS::URL::fileURLWithPath(NS::str(drive.string())));
    NS::RunLoop::currentRunLoop()->serveReady();
    EXPECT_EQ(log(), before);
}

} // namespace
