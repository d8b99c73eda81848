#include "Programs/Inspect/ChildProcess.h"

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

namespace {

using Inspection::ChildResult;
using End = ChildResult::End;

class ChildProcess : public Tests::FolderTest {
  protected:
    static ChildResult run(std::vector<std::string> command,
                           std::chrono::milliseconds limit = Tests::kPatience,
                           std::size_t output = 100'000) {
        return Inspection::runChild(std::move(command),
                                    {std::chrono::steady_clock::now() + limit, output});
    }
    // A program that writes its process's number into a file, and then does as told.
    std::string script(const std::string& commands) const {
        const auto path = folders.root() / "script";
        std::ofstream(path) << "#!/bin/sh\necho $$ > " << pidFile() << "\n" << commands << "\n";
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }
    std::string pidFile() const { return folders.root() / "pid"; }
    bool scriptIsGone() const {
        const int pid = std::stoi(Tests::contentsOf(pidFile()));
        return ::kill(pid, 0) != 0;
    }
};

TEST_F(ChildProcess, GivesWhatAProgramPrints) {
    const ChildResult result = run({"printf", "%s|", "a b", "$HOME", "*", "'\"", ""});
    EXPECT_EQ(result.end, End::kDone);
    EXPECT_EQ(result.output, "a b|$HOME|*|'\"||");
}

TEST_F(ChildProcess, GivesMoreThanAPipeHolds) {
    const ChildResult result = run({"head", "-c", "100000", "/dev/zero"});
    EXPECT_EQ(result.end, End::kDone);
    EXPECT_EQ(result.output, std::string(100'000, '\0'));
}

TEST_F(ChildProcess, ReadsNothingAndLosesWhatGoesToStandardError) {
    const ChildResult result = run({"sh", "-c", "cat; echo lost >&2; echo kept"});
    EXPECT_EQ(result.end, End::kDone);
    EXPECT_EQ(result.output, "kept\n");
}

TEST_F(ChildProcess, KnowsNoServersOfDebugInformation) {
    const Tests::ScopedVariable urls("DEBUGINFOD_URLS", "https://debug.example");
    const Tests::ScopedVariable other("QV_TEST_OTHER", "kept");
    EXPECT_EQ(run({"sh", "-c", "echo \"$DEBUGINFOD_URLS$QV_TEST_OTHER\""}).output, "kept\n");
}

TEST_F(ChildProcess, TellsOfAProgramThatIsNotThere) {
    EXPECT_EQ(run({"no-such-program-anywhere"}).end, End::kNotThere);
    const Tests::ScopedVariable path("PATH", folders.root().string());
    EXPECT_EQ(run({"printf", "a"}).end, End::kNotThere);
}

TEST_F(ChildProcess, TellsOfFailureAndKeepsNothingOfIt) {
    const ChildResult result = run({"sh", "-c", "echo half; exit 3"});
    EXPECT_EQ(result.end, End::kFailed);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(run({"sh", "-c", "kill -9 $$"}).end, End::kFailed);
}

TEST_F(ChildProcess, EndsWhatPrintsWithoutEnd) {
    const ChildResult result = run({script("exec cat /dev/zero")});
    EXPECT_EQ(result.end, End::kTooMuch);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(scriptIsGone());
}

TEST_F(ChildProcess, TakesAsMuchAsItsLimitAndNoMore) {
    EXPECT_EQ(run({"printf", "12345"}, Tests::kPatience, 5).end, End::kDone);
    EXPECT_EQ(run({"printf", "123456"}, Tests::kPatience, 5).end, End::kTooMuch);
}

TEST_F(ChildProcess, EndsWhatDoesNotComeToAnEnd) {
    const ChildResult result =
        run({script("echo begun; exec tail -f /dev/null")}, std::chrono::milliseconds(1500));
    EXPECT_EQ(result.end, End::kTooLate);
    EXPECT_EQ(result.output, "");
}

TEST_F(ChildProcess, EndsWhatClosesItsOutputAndGoesOn) {
    EXPECT_EQ(
        run({script("exec tail -f /dev/null > /dev/null")}, std::chrono::milliseconds(1500)).end,
        End::kTooLate);
}

// The limits are set when it runs already: it waits for them.
TEST_F(ChildProcess, HasMemoryAndTimeWithinBounds) {
    static_assert(Inspection::kMostMemory / 1024 == 4194304);
    static_assert(Inspection::kMostProcessorSeconds == 60);
    const ChildResult result =
        run({"sh", "-c",
             "until [ \"$(ulimit -v) $(ulimit -t)\" = '4194304 60' ]; do :; done; echo bounded"});
    EXPECT_EQ(result.output, "bounded\n");
}

TEST_F(ChildProcess, IsNotBegunAfterItsTime) {
    EXPECT_EQ(run({script("")}, std::chrono::milliseconds(-1)).end, End::kTooLate);
    EXPECT_FALSE(std::filesystem::exists(pidFile()));
}

} // namespace
