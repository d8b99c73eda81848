#include "Programs/Inspect/SymbolicReport.h"

#include "Programs/Inspect/BuildId.h"
#include "Programs/Inspect/InspectionError.h"
#include "Programs/Inspect/Testing/OwnProgram.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <unistd.h>

// What a report of the test tells of: neither inlined nor local to the file.
namespace Landmarks {

[[gnu::noinline]] void isCalled() {
    asm volatile("");
}
[[gnu::noinline]] std::uint64_t callsIt() {
    isCalled();
    return 0;
}

} // namespace Landmarks

namespace {

using testing::HasSubstr;
using testing::Not;

class SymbolicReport : public Tests::FolderTest {
  protected:
    // A report of this very program, with frames of it.
    std::string report(const std::string& frames, const std::string& module = {}) const {
        return "Process:  InspectTests [12]\nReport Version:  1\n\nThread 12 Crashed: a\n" +
               frames + "\nRegisters:\nrip     " + hexadecimal(instruction) +
               "\n\nBinary Images:\n" + (module.empty() ? ownModule() : module);
    }
    static std::string hexadecimal(std::uint64_t number) {
        std::array<char, 24> text{};
        (void)std::snprintf(text.data(), text.size(), "0x%016llx",
                            static_cast<unsigned long long>(number));
        return text.data();
    }
    static std::string ownBuild() {
        return Inspection::buildIdOf(Inspection::ProgramFile(Tests::ownProgram())).value_or("");
    }
    static std::string ownModule(const std::string& name = "own") {
        return module(name, ownBuild(), Tests::ownProgram());
    }
    static std::string module(const std::string& name, const std::string& id,
                              const std::string& path) {
        return hexadecimal(0x10000000) + " - " + hexadecimal(0x20000000) + "  " + name + "  <" +
               id + ">  " + path + "\n";
    }
    static std::string frame(int index, const std::string& module, std::uint64_t address) {
        return std::to_string(index) + "   " + module + "   " + hexadecimal(address) + " f + 1\n";
    }
    static std::uint64_t callee() { return Tests::addressInOwnProgram(&Landmarks::isCalled); }
    static std::uint64_t caller() { return Tests::addressInOwnProgram(&Landmarks::callsIt); }

    std::string print(const std::string& text) {
        std::ostringstream out;
        std::ostringstream messages;
        Inspection::printReport(text, Inspection::SourceLookup(Tests::kPatience), out, messages);
        notes = messages.str();
        return out.str();
    }
    // No tools but those that a test puts there.
    Tests::ScopedVariable withoutTools() const {
        return Tests::ScopedVariable("PATH", folders.root().string());
    }

    std::uint64_t instruction = 0x10000000 + callee();
    std::string notes;
};

TEST_F(SymbolicReport, HasTheSourceLinesBelowEachFrame) {
    const std::string text = print(report(frame(0, "own", callee())));
    EXPECT_THAT(text, HasSubstr(frame(0, "own", callee()) + "        Landmarks::isCalled() at "));
    EXPECT_THAT(text, HasSubstr("Programs/Inspect/SymbolicReportTests.cpp:"));
    EXPECT_EQ(notes, "");
}

// One byte behind the beginning of a function is a call to return from; the byte before is in
// another function or in none.
TEST_F(SymbolicReport, LooksUpTheCallInPlaceOfWhereItReturnsTo) {
    const std::string text = print(report(
        frame(0, "own", callee()) + frame(1, "own", caller() + 1) + frame(2, "own", caller())));
    EXPECT_THAT(text, HasSubstr(frame(1, "own", caller() + 1) + "        Landmarks::callsIt()"));
    EXPECT_THAT(text, Not(HasSubstr(frame(2, "own", caller()) + "        Landmarks::callsIt()")));
}

TEST_F(SymbolicReport, TakesTheFirstFrameForACallInAStackOfCalls) {
    instruction = 0x99;
    EXPECT_THAT(print(report(frame(0, "own", caller()))),
                Not(HasSubstr("        Landmarks::callsIt()")));
    EXPECT_THAT(print(report(frame(0, "own", caller() + 1))),
                HasSubstr("        Landmarks::callsIt()"));
}

TEST_F(SymbolicReport, LeavesTheReportItselfAsItIs) {
    const auto path = withoutTools();
    const std::string text = report(frame(0, "own", callee()) + frame(1, "???", 16));
    EXPECT_EQ(print(text), text);
}

TEST_F(SymbolicReport, TellsOnceThatThereIsNoTool) {
    const auto path = withoutTools();
    (void)print(report(frame(0, "own", callee()) + frame(1, "other", callee()),
                       ownModule() + ownModule("other")));
    EXPECT_EQ(notes, "no source lines: neither eu-addr2line (elfutils) nor addr2line (binutils) is "
                     "installed\n");
}

TEST_F(SymbolicReport, TellsOfAToolThatFails) {
    std::ofstream(folders.root() / "eu-addr2line") << "#!/bin/sh\nexit 1\n";
    std::filesystem::permissions(folders.root() / "eu-addr2line",
                                 std::filesystem::perms::owner_all);
    const auto path = withoutTools();
    const std::string text = report(frame(0, "own", callee()));
    EXPECT_EQ(print(text), text);
    EXPECT_EQ(notes, "no source lines for own: looking them up failed or took too long\n");
}

// Another file may stand at the path by the time that the tool opens it.
TEST_F(SymbolicReport, HandsOnTheVeryFileThatWasLookedAt) {
    const auto tool = folders.root() / "eu-addr2line";
    const auto asked = folders.root() / "asked";
    std::ofstream(tool) << "#!/bin/sh\necho \"$6\" > " << asked << "\n";
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    const auto path = withoutTools();
    (void)print(report(frame(0, "own", callee())));
    EXPECT_THAT(Tests::contentsOf(asked),
                testing::StartsWith("/proc/" + std::to_string(::getpid()) + "/fd/"));
}

TEST_F(SymbolicReport, LooksAtTheVeryBuildAlone) {
    const std::string frames = frame(0, "own", callee());
    for (const std::string& other :
         {module("own", "00", Tests::ownProgram()), module("own", "", Tests::ownProgram()),
          module("own", "00", "/absent"), module("another", "00", "/absent"),
          ownModule() + ownModule()}) {
        EXPECT_EQ(print(report(frames, other)), report(frames, other));
        EXPECT_THAT(notes, testing::StartsWith("no source lines for own: ")) << other;
        EXPECT_EQ(std::count(notes.begin(), notes.end(), '\n'), 1) << notes;
    }
}

TEST_F(SymbolicReport, FindsTheBuildAgainThatWasReplacedWhileItRan) {
    const std::string frames = frame(0, "own", callee());
    const std::string replaced = Tests::ownProgram() + " (deleted)";
    EXPECT_THAT(print(report(frames, module("own", ownBuild(), replaced))),
                HasSubstr("        Landmarks::isCalled() at "));
    EXPECT_EQ(notes, "");
    const std::string other = report(frames, module("own", "00", replaced));
    EXPECT_EQ(print(other), other);
    EXPECT_EQ(notes,
              "no source lines for own: the build that crashed is not at " + replaced + "\n");
}

TEST_F(SymbolicReport, IsUsedUnderANameThatEndsLikeAReplacedOnes) {
    const std::string copy = folders.root() / "program (deleted)";
    std::filesystem::create_symlink(Tests::ownProgram(), copy);
    EXPECT_THAT(print(report(frame(0, "own", callee()), module("own", ownBuild(), copy))),
                HasSubstr("        Landmarks::isCalled() at "));
}

TEST_F(SymbolicReport, SaysNothingOfModulesWithoutFrames) {
    (void)print(report(frame(0, "own", callee()), ownModule() + module("b", "00", "/absent")));
    EXPECT_EQ(notes, "");
}

TEST_F(SymbolicReport, ShowsWhatWouldSteerATerminal) {
    const std::string text =
        print(report("0   a\x1b[2J   " + hexadecimal(16) + " f\n", module("b", "00", "/b\x07")));
    EXPECT_THAT(text, HasSubstr("0   a\\x1b[2J   0x"));
    EXPECT_THAT(text, HasSubstr("/b\\x07\n"));
    EXPECT_THAT(notes, HasSubstr("a\\x1b[2J: "));
}

TEST_F(SymbolicReport, FollowsNoMoreFramesThanAReportHas) {
    std::string frames;
    for (int i = 0; i < 1200; ++i) {
        frames += frame(i, "own", callee() + (i == 0 ? 0 : 1));
    }
    const std::string text = print(report(frames));
    EXPECT_THAT(text, HasSubstr(frame(1023, "own", callee() + 1) + "        Landmarks"));
    EXPECT_THAT(text,
                HasSubstr(frame(1024, "own", callee() + 1) + frame(1025, "own", callee() + 1)));
}

TEST_F(SymbolicReport, FollowsNoMoreModulesThanAReportHas) {
    std::string frames;
    for (int i = 0; i < 100; ++i) {
        frames += frame(i, "m" + std::to_string(i), 16);
    }
    (void)print(report(frames));
    EXPECT_EQ(std::count(notes.begin(), notes.end(), '\n'), 64);
}

TEST_F(SymbolicReport, IsNotMadeOfAnythingElse) {
    EXPECT_THROW((void)print("text\n"), Inspection::Error);
}

} // namespace
