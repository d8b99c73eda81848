#include "Programs/Inspect/SourceLines.h"

#include "Programs/Inspect/Testing/OwnProgram.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <gmock/gmock.h>

#include <fstream>

// A function of its own, for its place to be looked up: neither inlined nor local to the file.
namespace Landmarks {

inline constexpr int kLine = __LINE__ + 1;
[[gnu::noinline]] int standsHere(int value) {
    return value + kLine;
}

} // namespace Landmarks

namespace {

using Inspection::SourceLine;
using Inspection::SourceLookup;
using testing::HasSubstr;
using Outcome = SourceLookup::Outcome;
using Found = std::vector<std::vector<SourceLine>>;

class SourceLines : public Tests::FolderTest {
  protected:
    // A tool of the test's own in place of the system's: what it does is a shell's script.
    void putTool(const std::string& name, const std::string& commands) const {
        std::filesystem::create_directories(tools());
        std::ofstream(tools() / name) << "#!/bin/sh\n" << commands << "\n";
        std::filesystem::permissions(tools() / name, std::filesystem::perms::owner_all);
    }
    void putAnswer(const std::string& name, const std::string& answer) const {
        std::ofstream(folders.root() / "answer") << answer;
        putTool(name, "printf '%s\\n' \"$@\" > " + (folders.root() / "asked").string() +
                          "\nexec /bin/cat " + (folders.root() / "answer").string());
    }
    std::filesystem::path tools() const { return folders.root() / "tools"; }

    Outcome look(const std::string& path, std::vector<std::uint64_t> addresses,
                 std::chrono::milliseconds limit = Tests::kPatience) {
        return SourceLookup(limit).look(path, addresses, found);
    }
    // With no tools but the test's own.
    Outcome lookWithTools(std::vector<std::uint64_t> addresses,
                          std::chrono::milliseconds limit = Tests::kPatience) {
        const Tests::ScopedVariable path("PATH", tools().string());
        return look("/a program", std::move(addresses), limit);
    }
    static std::string textOf(const std::vector<SourceLine>& lines) {
        std::string text;
        for (const SourceLine& line : lines) {
            text += '[' + line.function + '|' + line.place + ']';
        }
        return text;
    }

    Found found;
};

TEST_F(SourceLines, AreThoseOfThisProgram) {
    const std::uint64_t address = Tests::addressInOwnProgram(&Landmarks::standsHere);
    ASSERT_EQ(look(Tests::ownProgram(), {0, address}), Outcome::kDone);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(textOf(found[0]), "");
    ASSERT_EQ(found[1].size(), 1U);
    EXPECT_EQ(found[1][0].function, "Landmarks::standsHere(int)");
    // Optimised, the line of the function's beginning may have no code.
    const std::string file = "Programs/Inspect/SourceLinesTests.cpp:";
    EXPECT_THAT(found[1][0].place,
                testing::AnyOf(HasSubstr(file + std::to_string(Landmarks::kLine)),
                               HasSubstr(file + std::to_string(Landmarks::kLine + 1))));
}

TEST_F(SourceLines, AreNoneInAFileThatIsNoProgram) {
    std::ofstream(folders.root() / "file") << "text";
    EXPECT_EQ(look(folders.root() / "file", {16}), Outcome::kFailed);
    EXPECT_EQ(look("/absent", {16}), Outcome::kFailed);
    EXPECT_EQ(found, Found());
}

TEST_F(SourceLines, AreAskedForWithArgumentsAsTheyAre) {
    putAnswer("addr2line", "0x000000000000001f\nf()\n/f.cpp:1\n0xfffffffffffffffe\n??\n??:0\n");
    ASSERT_EQ(lookWithTools({0x1F, 0xFFFFFFFFFFFFFFFE}), Outcome::kDone);
    EXPECT_EQ(Tests::contentsOf(folders.root() / "asked"),
              "-a\n-f\n-C\n-i\n-e\n/a program\n0x000000000000001f\n0xfffffffffffffffe\n");
    EXPECT_EQ(textOf(found[0]), "[f()|/f.cpp:1]");
    EXPECT_EQ(textOf(found[1]), "");
}

// As elfutils prints them, with columns and a text of where the function was inlined.
TEST_F(SourceLines, AreReadFromElfutils) {
    putAnswer("eu-addr2line", "0x000000000000115c\n"
                              "NS::S::in(int) inlined at /src/t.cpp:3:55 in NS::foo(int)\n"
                              "/src/t.cpp:2:76\nNS::foo(int)\n/src/t.cpp:3:55\n");
    putTool("addr2line", "exit 1");
    ASSERT_EQ(lookWithTools({0x115C}), Outcome::kDone);
    EXPECT_EQ(textOf(found[0]), "[NS::S::in(int)|/src/t.cpp:2:76][NS::foo(int)|/src/t.cpp:3:55]");
}

TEST_F(SourceLines, AreReadFromBinutils) {
    putAnswer("addr2line", "0x000000000000115c\nNS::S::in(int)\n/src/t.cpp:2 (discriminator 3)\n"
                           "NS::foo(int)\n/src/t.cpp:3\n");
    ASSERT_EQ(lookWithTools({0x115C}), Outcome::kDone);
    EXPECT_EQ(textOf(found[0]),
              "[NS::S::in(int)|/src/t.cpp:2 (discriminator 3)][NS::foo(int)|/src/t.cpp:3]");
}

TEST_F(SourceLines, LeaveOutWhatTheToolDoesNotKnow) {
    putAnswer("addr2line", "0x0000000000000001\n__restore_rt\nlibc_sigaction.c:?\n"
                           "0x0000000000000002\nraise\n??:0\n0x0000000000000003\n??\n/a.cpp:7\n");
    ASSERT_EQ(lookWithTools({1, 2, 3}), Outcome::kDone);
    EXPECT_EQ(textOf(found[0]), "[__restore_rt|libc_sigaction.c]");
    EXPECT_EQ(textOf(found[1]), "[raise|]");
    EXPECT_EQ(textOf(found[2]), "[|/a.cpp:7]");
}

TEST_F(SourceLines, AreNoneForAnAnswerToSomethingElse) {
    for (const char* const answer :
         {"", "0x0000000000000002\nf\n/f:1\n", "f\n/f:1\n", "0x0000000000000001\nf\n/f:1\n"}) {
        putAnswer("addr2line", answer);
        EXPECT_EQ(lookWithTools({1, 2}), Outcome::kFailed) << answer;
        EXPECT_EQ(found, Found());
    }
}

TEST_F(SourceLines, TellOfAMissingTool) {
    std::filesystem::create_directory(tools());
    EXPECT_EQ(lookWithTools({1}), Outcome::kNoTool);
}

TEST_F(SourceLines, AreNoneFromAToolThatFails) {
    putTool("addr2line", "echo 0x0000000000000001; exit 1");
    EXPECT_EQ(lookWithTools({1}), Outcome::kFailed);
}

TEST_F(SourceLines, AreNotWaitedForBeyondTheLimitOfAllLookUps) {
    putTool("addr2line", "exec /usr/bin/tail -f /dev/null");
    const Tests::ScopedVariable path("PATH", tools().string());
    const SourceLookup lookup(std::chrono::milliseconds(300));
    const std::uint64_t address = 1;
    EXPECT_EQ(lookup.look("/p", {&address, 1}, found), Outcome::kFailed);
    putAnswer("addr2line", "0x0000000000000001\nf\n/f:1\n");
    EXPECT_EQ(lookup.look("/p", {&address, 1}, found), Outcome::kFailed);
}

TEST_F(SourceLines, AreBoundedInLength) {
    putTool("addr2line", "exec /bin/cat /dev/zero");
    EXPECT_EQ(lookWithTools({1}), Outcome::kFailed);
}

} // namespace
