#include "Platform/CrashReporter/CrashReporter.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Steps = std::vector<std::string>;

// How a process ended.
struct End {
    std::optional<int> status;
    bool dumpedCore;

    bool operator==(const End&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const End& end) {
    return stream << end.status.value_or(-1) << (end.dumpedCore ? " with" : " without") << " core";
}

// A program that crashes, with folders of its own. A sanitiser that finds a fault ends it as the
// C library would.
class CrashReporter : public Tests::FolderTest {
  protected:
    Tests::Process start(const Steps& steps) const {
        return {PEER_PROGRAM, steps, folders.root() / "out", folders.root() / "err"};
    }
    End run(const Steps& steps) const {
        Tests::Process peer = start(steps);
        const auto status = peer.waitForExit();
        return {status, peer.dumpedCore()};
    }

    fs::path reportsFolder() const { return folders.state() / "Logs" / "DiagnosticReports"; }
    std::vector<fs::path> reports() const {
        std::vector<fs::path> files;
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(reportsFolder(), none)) {
            if (entry.path().extension() == ".crash") {
                files.push_back(entry.path());
            }
        }
        return files;
    }
    // The text of the only report.
    std::string report() const {
        const auto files = reports();
        return files.size() == 1 ? Tests::contentsOf(files.front())
                                 : std::to_string(files.size()) + " reports";
    }
    std::string reportOf(const Steps& steps) const {
        (void)run(steps);
        return report();
    }

    // The functions of the stack, innermost first, as they stand in the report.
    static std::vector<std::string> functionsIn(const std::string& report) {
        std::vector<std::string> functions;
        std::istringstream lines(report);
        const std::regex frame(R"((\d+) +\S+ +0x[0-9a-f]{16} (.*))");
        for (std::string line; std::getline(lines, line);) {
            std::smatch match;
            if (std::regex_match(line, match, frame)) {
                functions.push_back(match[2]);
            }
        }
        return functions;
    }
    // The innermost function, or the whole text where there is none.
    static std::string topOf(const std::string& report) {
        const auto functions = functionsIn(report);
        return functions.empty() ? report : functions.front();
    }
    static std::string textAfter(const std::string& report, const std::string& key) {
        const std::size_t at = report.find(key);
        return at == std::string::npos ? "" : report.substr(at, report.find('\n', at) - at);
    }

    Tests::ScopedVariable sanitiser{"ASAN_OPTIONS", "abort_on_error=1"};
    Tests::ScopedVariable zone{"TZ", "XST-5:30"};
};

struct Case {
    const char* step;
    const char* type;
    const char* function;
};

std::ostream& operator<<(std::ostream& stream, const Case& each) {
    return stream << each.step;
}

constexpr Case kCases[] = {
    {"null",               "SIGSEGV (11)", "_ZN8Crashing15dereferenceNullEv"   },
    {"call-null",          "SIGSEGV (11)", "_ZN8Crashing8callNullEv"           },
    {"abort",              "SIGABRT (6)",  "_ZN8Crashing17abortDeliberatelyEv" },
    {"overflow",           "SIGSEGV (11)", "_ZN8Crashing17recurseWithoutEndEi" },
    {"free-twice",         "SIGABRT (6)",  "_ZN8Crashing9freeTwiceEv"          },
    {"heap",               "SIGABRT (6)",  "_ZN8Crashing13damageTheHeapEv"     },
    {"raise",              "SIGABRT (6)",  "_ZN8Crashing9raiseOursEv"          },
    {"throw",              "SIGABRT (6)",  "_ZN8Crashing12throwForeignEv"      },
    {"divide",             "SIGFPE (8)",   "_ZN8Crashing12divideByZeroEv"      },
    {"no-instruction",     "SIGILL (4)",   "_ZN8Crashing16runNoInstructionEv"  },
    {"trap",               "SIGTRAP (5)",  "_ZN8Crashing16stopForADebuggerEv"  },
    {"call-data",          "SIGSEGV (11)", "_ZN8Crashing8callDataEv"           },
    {"raise-nothing",      "SIGABRT (6)",  "_ZN8Crashing16raiseWithoutTextEv"  },
    {"forbidden-call",     "SIGSYS (31)",  "_ZN8Crashing18makeAForbiddenCallEv"},
    {"beyond-file",        "SIGBUS (7)",   "_ZN8Crashing17readBeyondTheFileEv" },
    {"stack",              "SIGSEGV (11)", "_ZN8Crashing14damageTheStackEv"    },
    {"thread",             "SIGSEGV (11)", "_ZN8Crashing15dereferenceNullEv"   },
    {"overflow-in-thread", "SIGSEGV (11)", "_ZN8Crashing17recurseWithoutEndEi" },
    {"threads",            "SIGSEGV (11)", "_ZN8Crashing15dereferenceNullEv"   },
};

class CrashOfAKind : public CrashReporter, public testing::WithParamInterface<Case> {};

TEST_P(CrashOfAKind, LeavesOneReportWithTheFunctionInIt) {
    const std::string text = reportOf({"--report", GetParam().step});
    EXPECT_EQ(textAfter(text, "Exception Type: "),
              std::string("Exception Type:  ") + GetParam().type)
        << text;
    EXPECT_THAT(functionsIn(text), testing::Contains(StartsWith(GetParam().function))) << text;
}

TEST_P(CrashOfAKind, EndsTheProcessAsItWouldHaveEnded) {
    const End without = run({"--allow-core", GetParam().step});
    ASSERT_GT(without.status, 0);
    EXPECT_EQ(run({"--allow-core", "--report", GetParam().step}), without);
}

INSTANTIATE_TEST_SUITE_P(All, CrashOfAKind, testing::ValuesIn(kCases), [](const auto& each) {
    std::string name = each.param.step;
    std::erase(name, '-');
    return name;
});

TEST_F(CrashReporter, TellsOfTheProcess) {
    const std::string text = reportOf({"--report", "null"});
    EXPECT_TRUE(std::regex_search(
        text, std::regex("^Process:         CrashingPeer \\[[0-9]+\\]\n"
                         "Path:            " PEER_PROGRAM "\n"
                         "Version:         1\\.2\\.3\n"
                         "Date/Time:       [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}"
                         "\\.[0-9]{3} \\+0530\n"
                         "Host:            .+\n"
                         "OS Version:      Linux .+\n"
                         "Report Version:  1\n\n"
                         "Exception Type:  SIGSEGV \\(11\\)\n"
                         "Exception Codes: SEGV_MAPERR \\(1\\) at 0x0{16}\n\n"
                         "Thread [0-9]+ Crashed: CrashingPeer\n")))
        << text;
}

TEST_F(CrashReporter, NamesTheReportByProcessTimeAndHost) {
    const std::string text = reportOf({"--report", "null"});
    ASSERT_EQ(reports().size(), 1U);
    const std::string name = reports().front().filename();
    std::smatch match;
    ASSERT_TRUE(std::regex_match(
        name, match,
        std::regex(
            R"(CrashingPeer_(\d{4}-\d{2}-\d{2})-(\d{2})(\d{2})(\d{2})_[A-Za-z0-9.-]+\.crash)")))
        << name;
    EXPECT_THAT(text, HasSubstr("\nDate/Time:       " + match.str(1) + " " + match.str(2) + ":" +
                                match.str(3) + ":" + match.str(4) + "."));
}

TEST_F(CrashReporter, KeepsItsReportsToTheUser) {
    (void)run({"--report", "null"});
    ASSERT_EQ(reports().size(), 1U);
    EXPECT_EQ(fs::status(reports().front()).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::status(reportsFolder()).permissions(), fs::perms::owner_all);
}

TEST_F(CrashReporter, BeginsTheStackWithTheInterruptedFunction) {
    const auto functions = functionsIn(reportOf({"--report", "null"}));
    ASSERT_GE(functions.size(), 2U);
    EXPECT_THAT(functions[0], StartsWith("_ZN8Crashing15dereferenceNullEv + "));
    EXPECT_THAT(functions[1], StartsWith("main + "));
}

TEST_F(CrashReporter, ShowsTheCallerOfWhatIsNoCode) {
    const auto functions = functionsIn(reportOf({"--report", "call-null"}));
    ASSERT_GE(functions.size(), 3U);
    EXPECT_EQ(functions[0], "???");
    EXPECT_THAT(functions[1], StartsWith("_ZN8Crashing8callNullEv + "));
    EXPECT_THAT(functions[2], StartsWith("main + "));
}

TEST_F(CrashReporter, GivesTheRegistersAsTheSignalFoundThem) {
    const std::string text = reportOf({"--report", "call-null"});
    EXPECT_TRUE(
        std::regex_search(text, std::regex("\n\nRegisters:\n(rip|pc) +0x0{16}  (rsp|sp) +0x")))
        << text;
}

TEST_F(CrashReporter, ShowsBothEndsOfAnOverflowedStack) {
    const std::string text = reportOf({"--report", "overflow"});
    const auto functions = functionsIn(text);
    ASSERT_EQ(functions.size(), 512U);
    EXPECT_THAT(functions[0], StartsWith("_ZN8Crashing17recurseWithoutEndEi + "));
    EXPECT_THAT(functions, testing::Contains(StartsWith("_ZN8Crashing16overflowTheStackEv + ")));
    EXPECT_THAT(functions, testing::Contains(StartsWith("main + ")));
    EXPECT_TRUE(std::regex_search(text, std::regex("\n\\.\\.\\. [0-9]+ frames left out\n")));
}

TEST_F(CrashReporter, ShowsWhereAnExceptionOfOursWasRaised) {
    const std::string text = reportOf({"--report", "raise"});
    EXPECT_THAT(text, HasSubstr("\nApplication Specific Information:\nPeerException\n"
                                "the first line\\nthe second line\n\n"));
    EXPECT_THAT(topOf(text), StartsWith("_ZN8Crashing9raiseOursEv + "));
}

TEST_F(CrashReporter, SaysWhenAnExceptionDoesNotKnowItsWholeStack) {
    const std::string text = reportOf({"--report", "raise-far-down"});
    EXPECT_EQ(functionsIn(text).size(), 128U);
    EXPECT_THAT(text, HasSubstr("\n(no more than the innermost frames are known)\n\nRegisters"));
    EXPECT_THAT(topOf(text), StartsWith("_ZN8Crashing9raiseOursEv + "));
}

TEST_F(CrashReporter, TellsTheTypeAndTextOfAnotherException) {
    EXPECT_THAT(reportOf({"--report", "throw"}),
                HasSubstr("\nApplication Specific Information:\nstd::runtime_error\n"
                          "of the language\n\n"));
}

TEST_F(CrashReporter, SaysWhatAnExceptionDoesNotTell) {
    EXPECT_THAT(reportOf({"--report", "raise-nothing"}),
                HasSubstr("\nApplication Specific Information:\n(none)\n(none)\n\nThread "));
}

// A sanitiser would find the fault before it.
#if !defined(__SANITIZE_ADDRESS__)
TEST_F(CrashReporter, TellsTheLastWordsOfTheCLibrary) {
    EXPECT_TRUE(std::regex_search(
        reportOf({"--report", "free-twice"}),
        std::regex("\nApplication Specific Information:\n.*double free.*\n\nThread ")));
}
#endif

TEST_F(CrashReporter, LeavesTheInformationOutWhereThereIsNone) {
    EXPECT_THAT(reportOf({"--report", "null"}), Not(HasSubstr("Application Specific")));
}

TEST_F(CrashReporter, SaysWhenTheStackIsDamaged) {
    const std::string text = reportOf({"--report", "stack"});
    EXPECT_THAT(text, HasSubstr("\n(stack cut short by SIGSEGV)\n"));
    EXPECT_THAT(topOf(text), StartsWith("_ZN8Crashing14damageTheStackEv + "));
    EXPECT_THAT(text, HasSubstr("\nBinary Images:\n0x"));
}

TEST_F(CrashReporter, NamesTheThread) {
    const std::string text = reportOf({"--report", "thread"});
    std::smatch process;
    std::smatch thread;
    ASSERT_TRUE(std::regex_search(text, process, std::regex("^Process: .*\\[([0-9]+)\\]\n")));
    ASSERT_TRUE(
        std::regex_search(text, thread, std::regex("\nThread ([0-9]+) Crashed: CrashingPeer\n")));
    EXPECT_NE(process.str(1), thread.str(1));
}

TEST_F(CrashReporter, ListsTheModulesWithTheirBuildIds) {
    const std::string text = reportOf({"--report", "null"});
    EXPECT_TRUE(
        std::regex_search(text, std::regex("\n0x[0-9a-f]{16} - 0x[0-9a-f]{16}  CrashingPeer  "
                                           "<[0-9a-f]{40}>  " PEER_PROGRAM "\n")));
    EXPECT_TRUE(std::regex_search(text, std::regex("  libc\\.so\\.6  <[0-9a-f]{40}>  /.+\n")));
}

TEST_F(CrashReporter, ListsTheModulesBesideOneThatCannotBeRead) {
    const std::string text = reportOf({"--report", "--emptied-library", "null"});
    EXPECT_THAT(text, HasSubstr("  emptied.so  <>  "));
    EXPECT_THAT(text, HasSubstr("  libc.so.6  <"));
    EXPECT_THAT(topOf(text), StartsWith("_ZN8Crashing15dereferenceNullEv + "));
    EXPECT_THAT(text, Not(HasSubstr("cut short")));
}

// The addresses of the stack are those that the file was linked for: a function's is the one in its
// symbol table, which is smaller than the one in memory.
TEST_F(CrashReporter, GivesAddressesAsTheFileHasThem) {
    const std::string text = reportOf({"--report", "null"});
    std::smatch frame;
    ASSERT_TRUE(std::regex_search(text, frame, std::regex("\n0 +CrashingPeer +(0x[0-9a-f]{16}) ")));
    std::smatch image;
    ASSERT_TRUE(
        std::regex_search(text, image, std::regex("\n(0x[0-9a-f]{16}) - .*  CrashingPeer ")));
    EXPECT_LT(std::stoull(frame.str(1), nullptr, 16), std::stoull(image.str(1), nullptr, 16));
}

TEST_F(CrashReporter, TellsWhoSentTheSignal) {
    Tests::Process peer = start({"--report", "wait"});
    ASSERT_TRUE(Tests::waitUntil([&] { return peer.output() == "waiting\n"; }));
    ASSERT_TRUE(peer.waitForState('S'));
    peer.signal(SIGSEGV);
    (void)peer.waitForExit();
    EXPECT_THAT(report(), HasSubstr("\nException Codes: SI_USER (0) from process " +
                                    std::to_string(::getpid()) + "\n"));
}

TEST_F(CrashReporter, IsNotDisturbedByAbortsThatOthersSend) {
    std::optional<int> without;
    {
        Tests::Process undisturbed = start({"wait"});
        ASSERT_TRUE(Tests::waitUntil([&] { return undisturbed.output() == "waiting\n"; }));
        ASSERT_TRUE(undisturbed.waitForState('S'));
        undisturbed.signal(SIGSEGV);
        without = undisturbed.waitForExit();
    }
    Tests::Process peer = start({"--report", "wait"});
    ASSERT_TRUE(Tests::waitUntil([&] { return peer.output() == "waiting\n"; }));
    ASSERT_TRUE(peer.waitForState('S'));
    peer.signal(SIGSEGV);
    EXPECT_TRUE(Tests::waitUntil([&] {
        for (int i = 0; i < 1000; ++i) {
            peer.signal(SIGABRT);
        }
        return !peer.isRunning();
    }));
    EXPECT_EQ(peer.waitForExit(), without);
    const std::string text = report();
    EXPECT_THAT(text, HasSubstr("\nException Type:  SIGSEGV (11)\n"));
    EXPECT_THAT(text, HasSubstr("\nBinary Images:\n0x"));
    EXPECT_THAT(text, Not(HasSubstr("cut short")));
}

TEST_F(CrashReporter, EndsTheProcessAlsoWhenItWasStartedTwice) {
    const End without = run({"null"});
    EXPECT_EQ(run({"--report", "--report", "null"}), without);
    EXPECT_THAT(report(), StartsWith("Process:         CrashingPeer ["));
}

TEST_F(CrashReporter, RunsTheHandlerThatWasThereBefore) {
    const End without = run({"--own-handler", "null"});
    EXPECT_EQ(run({"--own-handler", "--report", "null"}), without);
    EXPECT_EQ(Tests::contentsOf(folders.root() / "out"), "goodbye\n");
    EXPECT_EQ(reports().size(), 1U);
}

// It goes on where the signal broke in, which has to be the very place.
TEST_F(CrashReporter, ComesBackToWhereNoCodeIsAfterAHandlerThatReturns) {
    const End without = run({"--returning-handler", "call-null"});
    ASSERT_EQ(without.status, 128 + SIGSEGV);
    EXPECT_EQ(run({"--returning-handler", "--report", "call-null"}), without);
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(CrashReporter, LeavesAnIgnoredSignalIgnored) {
    Tests::Process peer = start({"--ignore", "--report", "wait"});
    ASSERT_TRUE(Tests::waitUntil([&] { return peer.output() == "waiting\n"; }));
    ASSERT_TRUE(peer.waitForState('S'));
    peer.signal(SIGSEGV);
    peer.signal(SIGBUS);
    EXPECT_GT(peer.waitForExit(), 0);
    EXPECT_THAT(report(), HasSubstr("\nException Type:  SIGBUS (7)\n"));
}

TEST_F(CrashReporter, ReportsAChildOfAFork) {
    EXPECT_EQ(run({"--report", "child"}), run({"child"}));
    EXPECT_THAT(functionsIn(report()),
                testing::Contains(StartsWith("_ZN8Crashing13crashInAChildEv")));
}

TEST_F(CrashReporter, WorksWhileAnotherThreadHoldsTheLinkersLock) {
    // A sanitiser would wait for the lock after us.
    sanitiser.put("handle_segv=0");
    const std::string text = reportOf({"--report", "--lock-linker", "null"});
    EXPECT_THAT(functionsIn(text), testing::Contains(StartsWith("main + "))) << text;
}

TEST_F(CrashReporter, WorksWithoutStandardStreams) {
    EXPECT_THAT(topOf(reportOf({"--close-streams", "--report", "null"})),
                StartsWith("_ZN8Crashing15dereferenceNullEv + "));
}

TEST_F(CrashReporter, WorksWithoutFreeDescriptors) {
    const std::string text = reportOf({"--report", "--no-descriptors", "null"});
    EXPECT_THAT(topOf(text), StartsWith("_ZN8Crashing15dereferenceNullEv + "));
    EXPECT_THAT(text, HasSubstr("\nBinary Images:\n0x"));
}

TEST_F(CrashReporter, WorksAfterEveryDescriptorWasClosed) {
    EXPECT_THAT(topOf(reportOf({"--report", "--close-all", "null"})),
                StartsWith("_ZN8Crashing15dereferenceNullEv + "));
}

TEST_F(CrashReporter, MakesTheFolderAgainThatIsGone) {
    EXPECT_THAT(topOf(reportOf({"--report", "--remove-folder", "null"})),
                StartsWith("_ZN8Crashing15dereferenceNullEv + "));
}

TEST_F(CrashReporter, DoesNotFollowALinkInPlaceOfItsFolder) {
    const End without = run({"null"});
    EXPECT_EQ(run({"--report", "--link-folder", "null"}), without);
    EXPECT_TRUE(fs::is_empty(folders.home() / "elsewhere"));
}

TEST_F(CrashReporter, EndsTheProcessAlikeWhereNoReportCanBeWritten) {
    std::ofstream(folders.state() / "Logs") << "in the way";
    EXPECT_EQ(run({"--report", "null"}), run({"null"}));
    EXPECT_TRUE(reports().empty());
}

TEST_F(CrashReporter, SaysOnceOnTheConsoleWhyThereWillBeNoReports) {
    std::ofstream(folders.state() / "Logs") << "in the way";
    (void)run({"--report"});
    const std::string errors = Tests::contentsOf(folders.root() / "err");
    EXPECT_THAT(errors, HasSubstr("] crash reports: " + reportsFolder().string() + ": "));
    EXPECT_EQ(std::ranges::count(errors, '\n'), 1);
}

TEST_F(CrashReporter, WritesNothingWhenNothingHappens) {
    EXPECT_EQ(run({"--report"}).status, 0);
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ(Tests::contentsOf(folders.root() / "err"), "");
}

TEST_F(CrashReporter, KeepsTheNewestReportInPlaceAtTheNextStart) {
    (void)run({"--report", "null"});
    ASSERT_EQ(reports().size(), 1U);
    const fs::path first = reports().front();
    fs::last_write_time(first, fs::last_write_time(first) - std::chrono::hours(1));
    (void)run({"--report", "abort"});
    ASSERT_EQ(reports().size(), 2U);
    (void)run({"--report"});
    EXPECT_THAT(report(), HasSubstr("SIGABRT"));
    EXPECT_TRUE(fs::exists(reportsFolder() / "Retired" / first.filename()));
}

} // namespace
