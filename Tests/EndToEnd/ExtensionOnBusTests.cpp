#include "Tests/EndToEnd/ExtensionProcess.h"

#include "Platform/Foundation/URL.h"
#include "Platform/Ports/Testing/PumpUntil.h"
#include "Shell/FinderInterface.h"
#include "Shell/Testing/BusPeer.h"
#include "Tests/Support/SessionBus.h"

#include <csignal>
#include <fstream>
#include <optional>

namespace {

using Shell::FinderInterface::kName;
using Shell::FinderInterface::kWaitingName;

// A real extension and a real host, and a file manager that asks over a session bus.
class ExtensionOnBus : public Tests::ProcessTest {
  protected:
    Tests::Process startHost() {
        return {
            HOST_PROGRAM,
            {"--drive", drive.string()},
            folders.root() / "host.out",
            folders.root() / "host.err"
        };
    }
    bool waitForName() {
        return NS::pumpUntil([&] { return peer.nameHasOwner(kName); });
    }
    bool waitForNoName() {
        return NS::pumpUntil([&] { return !peer.nameHasOwner(kName); });
    }
    static std::string url(const std::filesystem::path& path) {
        return NS::URL::fileURLWithPath(NS::String::fromFileSystemRepresentation(path.string()))
            ->absoluteString()
            ->utf8();
    }

    Tests::SessionBus bus{folders};
    Tests::BusPeer peer;
};

TEST_F(ExtensionOnBus, IsThereOnceItsInitialiserHasReturned) {
    auto extension = startExtension();
    ASSERT_TRUE(Tests::waitUntil([&] { return registeredEntries() > 0; }));
    EXPECT_FALSE(peer.nameHasOwner(kName));
    auto host = startHost();
    ASSERT_TRUE(waitForName());
    EXPECT_NE(logs().find("initial init at"), std::string::npos);
}

TEST_F(ExtensionOnBus, TellsThatItWaitsUntilItKnowsItsDrive) {
    auto extension = startExtension();
    ASSERT_TRUE(Tests::waitUntil([&] { return peer.nameHasOwner(kWaitingName); }));
    auto host = startHost();
    ASSERT_TRUE(waitForName());
    EXPECT_TRUE(NS::pumpUntil([&] { return !peer.nameHasOwner(kWaitingName); }));
}

TEST_F(ExtensionOnBus, TellsThatTheHostHasStoppedAndGoesOn) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    ASSERT_TRUE(
        Tests::waitUntil([&] { return peer.menu(3, {}).find("used") != std::string::npos; }));
    EXPECT_TRUE(Tests::waitUntil([&] { return peer.property("HostAnswers") == "true"; }));
    host.signal(SIGSTOP);
    ASSERT_TRUE(host.waitForState('T'));
    EXPECT_TRUE(Tests::waitUntil([&] {
        (void)peer.menu(3, {});
        return peer.property("HostAnswers") == "false";
    }));
    host.signal(SIGCONT);
    EXPECT_TRUE(Tests::waitUntil([&] { return peer.property("HostAnswers") == "true"; }));
}

TEST_F(ExtensionOnBus, TellsThatTheHostIsThereNoLonger) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    ASSERT_TRUE(
        Tests::waitUntil([&] { return peer.menu(3, {}).find("used") != std::string::npos; }));
    peer.followProperties();
    host.signal(SIGKILL);
    EXPECT_TRUE(NS::pumpUntil(
        [&] { return !peer.changes.empty() && peer.changes.back() == "HostAnswers=false"; }));
}

TEST_F(ExtensionOnBus, GoesWithItsProcess) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    extension.signal(SIGKILL);
    EXPECT_TRUE(waitForNoName());
    auto next = startExtension("next");
    EXPECT_TRUE(waitForName());
    host.signal(SIGTERM);
    EXPECT_TRUE(waitForNoName());
    EXPECT_EQ(next.waitForExit(), 0);
}

TEST_F(ExtensionOnBus, TellsOfTheDriveAndOfNewRecords) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    peer.followProperties();
    EXPECT_EQ(peer.property("WatchedFolders"), "[\"" + url(drive) + "\"]");
    EXPECT_EQ(peer.property("ToolbarItemName"), "\"Fennmoor Cloud\"");
    EXPECT_EQ(peer.property("ToolbarItemToolTip"), "\"Mounted at " + drive.string() + "\"");
    EXPECT_EQ(peer.property("ToolbarItemImage"), "\"MainOnline\"");
    std::ofstream(drive / "a.txt") << "x";
    EXPECT_EQ(peer.run(0, "moveToTrash", {{url(drive / "a.txt")}, url(drive)}), "");
    ASSERT_TRUE(NS::pumpUntil([&] { return !peer.changes.empty(); }));
    EXPECT_TRUE(peer.changes[0].starts_with("Generation="));
}

TEST_F(ExtensionOnBus, DoesNotTellOfARecordThatMenusShowTheSameOf) {
    std::ofstream(drive / "a.txt") << "x"; // now, as its size changes the storage line
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    ASSERT_TRUE(
        Tests::waitUntil([&] { return peer.menu(3, {}).find("used") != std::string::npos; }));
    const auto generation = peer.property("Generation");
    (void)peer.menu(3, {}); // which has the host send its record again
    EXPECT_EQ(peer.run(0, "moveToTrash", {{url(drive / "a.txt")}, url(drive)}), "");
    // Records come in order, so that the one in between has come as well.
    const auto next = std::to_string(std::stoul(generation) + 1);
    EXPECT_TRUE(Tests::waitUntil(
        [&] { return peer.menu(3, {}).find("Empty Trash (1)") != std::string::npos; }));
    EXPECT_EQ(peer.property("Generation"), next);
}

TEST_F(ExtensionOnBus, CarriesAPickedEntryToTheHost) {
    std::ofstream(drive / "a b.txt") << "x";
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    const Tests::PlaceArguments place{{url(drive / "a b.txt")}, url(drive)};
    EXPECT_EQ(
        peer.menu(0, place),
        R"("Fennmoor Cloud" [("QV: Share" "shareItem:" true) )"
        R"(("QV: Show Properties" "showProps" true) ("QV: Move To Trash" "moveToTrash" true)])");
    EXPECT_EQ(peer.run(0, "moveToTrash", place), "");
    EXPECT_TRUE(Tests::waitUntil([&] {
        return host.output().find(R"({"action":"ext_movetotrash","payload":[["/a b.txt"]])") !=
               std::string::npos;
    })) << host.output();
}

TEST_F(ExtensionOnBus, EndsByTheMenuOfTheDriveItselfOnceThatIsAnswered) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    EXPECT_TRUE(peer.menu(0, {{url(drive)}, url(drive.parent_path())})
                    .starts_with("error com.Quorvane.Quorvane.QVFinderExtension.Error.Raised: "
                                 "NSRangeException: "));
    EXPECT_EQ(extension.waitForExit(), 128 + SIGABRT);
    EXPECT_NE(extension.errors().find("a call over the session bus raised NSRangeException: "),
              std::string::npos);
    EXPECT_NE(logs().find("================= Exception: *** -[NSArray objectAtIndex:]"),
              std::string::npos);
    EXPECT_TRUE(waitForNoName());
}

TEST_F(ExtensionOnBus, LeavesAReportOfTheMenuThatRaised) {
    auto host = startHost();
    auto extension = startExtension();
    ASSERT_TRUE(waitForName());
    (void)peer.menu(0, {{url(drive)}, url(drive.parent_path())});
    ASSERT_EQ(extension.waitForExit(), 128 + SIGABRT);
    std::string report;
    for (const auto& entry : std::filesystem::directory_iterator(reportsFolder())) {
        report += Tests::contentsOf(entry.path());
    }
    EXPECT_EQ(report.find("Process:         QVFinderExtension ["), 0U) << report;
    EXPECT_NE(report.find("\nApplication Specific Information:\nNSRangeException\n"),
              std::string::npos)
        << report;
    EXPECT_NE(report.find("menuForMenuKind"), std::string::npos) << report;
}

class ExtensionWithoutABus : public Tests::ProcessTest {};

TEST_F(ExtensionWithoutABus, WorksOn) {
    Tests::Process host(HOST_PROGRAM, {"--drive", drive.string()}, folders.root() / "host.out",
                        folders.root() / "host.err");
    auto extension = startExtension();
    EXPECT_TRUE(Tests::waitUntil([&] {
        return extension.errors().find("no session bus for file managers") != std::string::npos;
    }));
    host.signal(SIGTERM);
    EXPECT_EQ(extension.waitForExit(), 0);
}

} // namespace
