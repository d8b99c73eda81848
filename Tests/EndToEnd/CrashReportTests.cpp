#include "CustomConsoleLogging/Testing/ReportsFixture.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <gmock/gmock.h>

#include <csignal>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

// Real processes that crash, and the client's gatherer of diagnostics, which is the test itself.
class CrashReports : public Tests::ReportsTest {
  protected:
    Tests::Process start(const char* program, std::vector<std::string> arguments) const {
        return {program, std::move(arguments), folders.root() / "out", folders.root() / "err"};
    }
    // Whether a port is registered whose name begins so.
    bool hasNames(const std::string& beginning) const {
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(folders.runtime() / "Quorvane", none)) {
            if (entry.path().filename().string().starts_with(beginning)) {
                return true;
            }
        }
        return false;
    }
    // A process is up once it waits with its port registered: the name is there a moment before the
    // process has noted that it is to go.
    bool isUp(const Tests::Process& process, const std::string& port) const {
        return Tests::waitUntil([&] { return hasNames(port); }) && process.waitForState('S');
    }
    // Two reports of the extension's, the newer last. The file system's clock may show both alike.
    std::vector<fs::path> crashTwice() {
        std::vector<fs::path> found;
        for (const long seconds : {1794812187L, 1794812188L}) {
            EXPECT_GT(start(CRASHING_PROGRAM, {"--report-extension", "null"}).waitForExit(), 0);
            for (const auto& entry : fs::directory_iterator(reports())) {
                if (found.empty() || entry.path() != found.front()) {
                    found.push_back(entry.path());
                    modify(entry.path(), seconds);
                }
            }
        }
        return found;
    }
    // Starts the extension, and ends it once it is up.
    void runExtension() const {
        Tests::Process extension = start(EXTENSION_PROGRAM, {});
        ASSERT_TRUE(isUp(extension, "com.Quorvane.QVExtensionCommsClient-"));
        extension.signal(SIGTERM);
        EXPECT_TRUE(extension.waitForExit());
    }
    static std::string newest() { return bytesOf(logging().findQVDiagnosticReport()); }
    static std::string lastGenerated() {
        return bytesOf(logging().getPathOfLastGeneratedCrashReport());
    }

    // What a sanitiser ends it ends by SIGABRT too.
    Tests::ScopedVariable sanitiser{"ASAN_OPTIONS", "abort_on_error=1"};
};

class CrashReportOfAKind : public CrashReports, public testing::WithParamInterface<const char*> {};

TEST_P(CrashReportOfAKind, IsFoundByTheGatherer) {
    Tests::Process peer = start(CRASHING_PROGRAM, {"--report-extension", GetParam()});
    EXPECT_GT(peer.waitForExit(), 0);
    const std::string found = newest();
    EXPECT_THAT(found, StartsWith(reports() / "QVFinderExtension_"));
    EXPECT_EQ(lastGenerated(), found);
    EXPECT_THAT(bytesOf(*logging().findQVDiagnosticReports()), testing::ElementsAre(found));
    EXPECT_THAT(Tests::contentsOf(found), HasSubstr("\nThread "));
}

INSTANTIATE_TEST_SUITE_P(All, CrashReportOfAKind,
                         testing::Values("null", "abort", "overflow", "free-twice", "raise"),
                         [](const auto& each) {
                             std::string name = each.param;
                             std::erase(name, '-');
                             return name;
                         });

TEST_F(CrashReports, AreLeftByTheExtension) {
    Tests::Process extension = start(EXTENSION_PROGRAM, {});
    ASSERT_TRUE(isUp(extension, "com.Quorvane.QVExtensionCommsClient-"));
    extension.signal(SIGSEGV);
    EXPECT_GT(extension.waitForExit(), 128);
    EXPECT_THAT(newest(), StartsWith(reports() / "QVFinderExtension_"));
    EXPECT_THAT(Tests::contentsOf(newest()),
                AllOf(StartsWith("Process:         QVFinderExtension ["),
                      HasSubstr("\nVersion:         " QUORVANE_VERSION "\n"),
                      HasSubstr("FinderSync"), HasSubstr(" main + ")));
}

TEST_F(CrashReports, AreLeftByTheHost) {
    Tests::Process host = start(HOST_PROGRAM, {"--drive", folders.home().string()});
    ASSERT_TRUE(isUp(host, "com.Quorvane.QVExtensionCommsServer"));
    host.signal(SIGSEGV);
    EXPECT_GT(host.waitForExit(), 128);
    EXPECT_THAT(newest(), StartsWith(reports() / "Fennmoor_"));
    EXPECT_THAT(Tests::contentsOf(newest()), StartsWith("Process:         Fennmoor ["));
}

TEST_F(CrashReports, DoNotKeepTheNamesOfAnAbortedProcess) {
    Tests::Process extension = start(EXTENSION_PROGRAM, {});
    ASSERT_TRUE(isUp(extension, "com.Quorvane.QVExtensionCommsClient-"));
    extension.signal(SIGABRT);
    EXPECT_EQ(extension.waitForExit(), 128 + SIGABRT);
    EXPECT_THAT(Tests::contentsOf(newest()),
                HasSubstr("\nException Type:  SIGABRT (6)\n"
                          "Exception Codes: SI_USER (0) from process " +
                          std::to_string(::getpid()) + "\n"));
    EXPECT_FALSE(hasNames("com.Quorvane."));
}

TEST_F(CrashReports, StayFoundAfterTheNextStart) {
    ASSERT_GT(start(CRASHING_PROGRAM, {"--report-extension", "null"}).waitForExit(), 0);
    const std::string found = newest();
    runExtension();
    EXPECT_EQ(newest(), found);
    EXPECT_EQ(lastGenerated(), found);
}

TEST_F(CrashReports, AreRetiredAtTheNextStartButForTheNewest) {
    const std::vector<fs::path> found = crashTwice();
    ASSERT_EQ(found.size(), 2U);
    runExtension();
    EXPECT_EQ(newest(), found.back());
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticRetiredReport()),
              retired() / found.front().filename());
    EXPECT_FALSE(fs::exists(found.front()));
}

TEST_F(CrashReports, StayWhereTheyAreWhenAProgramOnlyTellsOfItself) {
    (void)crashTwice();
    for (const std::string suffix : {"a", "b"}) {
        put(reports() / ("Fennmoor_2026-11-21-140311_" + suffix + ".crash"));
    }
    for (const char* const option : {"--version", "--help", "--no-such-option"}) {
        (void)start(EXTENSION_PROGRAM, {option}).waitForExit();
        (void)start(HOST_PROGRAM, {option}).waitForExit();
        EXPECT_FALSE(fs::exists(retired())) << option;
    }
}

TEST_F(CrashReports, AreShownWithTheirSourceLines) {
    ASSERT_GT(start(CRASHING_PROGRAM, {"--report-extension", "null"}).waitForExit(), 0);
    Tests::Process inspector = start(INSPECT_PROGRAM, {"report", newest()});
    EXPECT_EQ(inspector.waitForExit(), 0);
    EXPECT_THAT(inspector.output(),
                AllOf(HasSubstr("Crashing::dereferenceNull()"), HasSubstr("CrashingPeer.cpp:")));
}

} // namespace
