#include "Programs/Inspect/CrashReport.h"

#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

namespace {

using Inspection::CrashReport;
using Inspection::readCrashReport;

constexpr std::string_view kHead = "Process:         QVFinderExtension [12]\nReport Version:  1\n\n"
                                   "Exception Type:  SIGSEGV (11)\n";

// A report's text in parts.
class CrashReportText : public testing::Test {
  protected:
    const CrashReport& read(const std::string& rest) {
        text_ = std::string(kHead) + rest;
        report_ = readCrashReport(text_).value();
        return report_;
    }
    // Each frame as "module address", with a "!" for an instruction.
    std::string frames(const std::string& rest) {
        std::string shown;
        for (const auto& frame : read(rest).frames) {
            shown += '[' + frame.module + ' ' + std::to_string(frame.address) +
                     (frame.isInstruction ? "!]" : "]");
        }
        return shown;
    }
    std::string modules(const std::string& rest) {
        std::string shown;
        for (const auto& module : read(rest).modules) {
            shown += '[' + module.name + '|' + module.buildId + '|' + module.path + ']';
        }
        return shown;
    }

  private:
    std::string text_;
    CrashReport report_;
};

TEST_F(CrashReportText, HasFrames) {
    EXPECT_EQ(frames("\nThread 12 Crashed: name\n"
                     "0   a program            0x0000000000000010 f() + 3\n"
                     "1   b                    0x00000000000000ff ???\n"
                     "...  7 frames left out\n"
                     "128 ???                  0xffffffffffffffff\n"),
              "[a program 16!][b 255][??? 18446744073709551615]");
}

TEST_F(CrashReportText, TellsTheLineOfAFrame) {
    const CrashReport& report =
        read("\nThread 12 Crashed: name\n0 a 0x0000000000000010 f\nx\n1 b 0x0000000000000011 g\n");
    ASSERT_EQ(report.frames.size(), 2U);
    EXPECT_EQ(report.lines[report.frames[0].line], "0 a 0x0000000000000010 f");
    EXPECT_EQ(report.lines[report.frames[1].line], "1 b 0x0000000000000011 g");
}

TEST_F(CrashReportText, TakesTheAddressOfSixteenDigitsForAFrames) {
    EXPECT_EQ(frames("\nThread 12 Crashed:\n0 a 0xfe 0x 0x0000000000000010 f 0x0000000000000011\n"),
              "[a 0xfe 0x 16!]");
    EXPECT_EQ(frames("\nThread 12 Crashed:\n0 a 0x10 f\n1 a 0x00000000000000100 f\n"
                     "a 0x0000000000000010\n0a 0x0000000000000010\n0\n \n"
                     "2 a 0x000000000000001g\n"),
              "");
}

TEST_F(CrashReportText, TakesNoFramesFromElsewhere) {
    EXPECT_EQ(frames("Application Specific Information:\nThread 1 Crashed:\n"
                     "0 a 0x0000000000000010 f\n\nNotes:\n0 a 0x0000000000000010 f\n\n"
                     "Thread 12 Crashed: a\n\n0 a 0x0000000000000010 f\n"),
              "");
}

constexpr const char* kStackAndModule =
    "\nThread 12 Crashed: a\n0   a  0x0000000000000010 f\n1   a  0x0000000000000020 g\n\n"
    "Binary Images:\n0x0000000000001000 - 0x0000000000002000  a  <ab>  /a\n\nRegisters:\n";

TEST_F(CrashReportText, TellsAnInstructionByItsRegister) {
    for (const char* const registers : {"rip     0x0000000000001010  rsp     0x0000000000000000\n",
                                        "x0      0x0000000000000000  pc      0x0000000000001010\n",
                                        "rip     0x0000000000000010\n", ""}) {
        EXPECT_EQ(frames(kStackAndModule + std::string(registers)), "[a 16!][a 32]") << registers;
    }
}

// That of an exception's raising: the instruction that ended the process is not in it.
TEST_F(CrashReportText, TellsAStackOfCallsByTheRegister) {
    EXPECT_EQ(frames(kStackAndModule + std::string("rax     0x0000000000001010\n"
                                                   "rip     0x0000000000009999\n")),
              "[a 16][a 32]");
}

TEST_F(CrashReportText, HasModules) {
    EXPECT_EQ(
        modules("\nBinary Images:\n"
                "0x0000000000001000 - 0x0000000000002000  a program  <00ff>  /usr/bin/a program\n"
                "0x0000000000003000 - 0x0000000000004000  b  <>  /b\n"),
        "[a program|00ff|/usr/bin/a program][b||/b]");
}

TEST_F(CrashReportText, GivesAPathItsBytesBack) {
    EXPECT_EQ(modules("\nBinary Images:\n0x0000000000001000 - 0x0000000000002000  a  <00>  "
                      "/\\x1b\\xE9\\xe9\\n\\t\\\\x\\x\\\n"),
              "[a|00|/\x1b"
              "xE9\xe9\n\t\\xx\\]");
}

TEST_F(CrashReportText, TakesNoModulesOfAnotherForm) {
    EXPECT_EQ(modules("\nBinary Images:\n"
                      "0x0000000000001000 - 0x0000000000002000  a  <00>  relative/path\n"
                      "0x0000000000001000 - 0x2000  a  <00>  /a\n"
                      "0x0000000000001000  a  <00>  /a\n"
                      "0x0000000000001000 - 0x0000000000002000  a  00  /a\n"
                      "0x0000000000001000 - 0x0000000000002000  /a\n"
                      "0x0000000000001000 - 0x0000000000002000\n"
                      "0x0000000000001000 - 0x0000000000002000  a  <00  /a\n"
                      "0x0000000000001000 - 0x0000000000002000  <00>  /a\n"),
              "[|00|/a]");
    EXPECT_EQ(modules("\nBinary Images:\n"
                      "0x0000000000001000 - 0x0000000000002000  a  <0g>  /a\n"),
              "[a||/a]");
}

TEST_F(CrashReportText, IsKnownByItsHead) {
    EXPECT_TRUE(readCrashReport(kHead));
    for (const char* const text :
         {"", "\n", "text", "Process: a\n", "Process: a\nReport Version: 2\n",
          "Process: a\nReport Version: 11\n", "Process: a\n\nReport Version: 1\n",
          "Report Version: 1\nProcess: a\n", "{\"app_name\":\"a\"}\n"}) {
        EXPECT_FALSE(readCrashReport(text)) << text;
    }
}

TEST_F(CrashReportText, MayEndAnywhere) {
    const std::string rest = kStackAndModule + std::string("rip     0x0000000000001010\n");
    for (std::size_t length = 0; length <= rest.size(); ++length) {
        EXPECT_LE(read(rest.substr(0, length)).frames.size(), 2U);
    }
}

// The example of the format's page.
TEST_F(CrashReportText, IsAsThePageShowsIt) {
    const std::string page = Tests::contentsOf(CRASH_REPORTS_PAGE);
    const std::size_t begin = page.find("\n    Process:") + 1;
    std::string text;
    for (std::size_t at = begin; page.substr(at, 4) == "    " || page[at] == '\n';) {
        const std::size_t end = page.find('\n', at);
        text += page[at] == '\n' ? "" : page.substr(at + 4, end - at - 4);
        text += '\n';
        at = end + 1;
    }
    const auto report = readCrashReport(text);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->frames.size(), 5U);
    EXPECT_TRUE(report->frames.front().isInstruction);
    EXPECT_EQ(report->modules.size(), 2U);
    EXPECT_EQ(report->modules.front().name, "quorvane-finder-extension");
}

} // namespace
