#include "Platform/Foundation/ProcessInfo.h"

#include "Tests/Support/Process.h"

#include <gmock/gmock.h>

#include <array>
#include <filesystem>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

std::string uniqueString() {
    return NS::ProcessInfo::processInfo()->globallyUniqueString()->utf8();
}

TEST(ProcessInfo, NamesTheProgram) {
    // Not the thread's name, which programs change and the kernel cuts to 15 characters.
    EXPECT_EQ(NS::ProcessInfo::processInfo()->processName()->utf8(),
              std::filesystem::read_symlink("/proc/self/exe").filename().string());
}

TEST(ProcessInfo, KnowsItsNumber) {
    EXPECT_EQ(NS::ProcessInfo::processInfo()->processIdentifier(), ::getpid());
}

TEST(ProcessInfo, IsOneObject) {
    EXPECT_EQ(NS::ProcessInfo::processInfo(), NS::ProcessInfo::processInfo());
}

TEST(ProcessInfo, GivesATextThatCanBeAFileName) {
    const std::string text = uniqueString();
    EXPECT_LE(text.size(), 80U);
    EXPECT_THAT(text, testing::MatchesRegex("[0-9A-F-]+"));
    EXPECT_THAT(text, testing::HasSubstr("-" + std::to_string(::getpid()) + "-"));
}

TEST(ProcessInfo, GivesAnotherTextAtEachCall) {
    std::set<std::string> texts;
    for (int i = 0; i < 1000; ++i) {
        texts.insert(uniqueString());
    }
    EXPECT_EQ(texts.size(), 1000U);
}

// A copy of the process has its counter and its clock.
TEST(ProcessInfo, GivesAnotherTextInAForkedProcess) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const std::string text = uniqueString();
        (void)!::write(pipe[1], text.data(), text.size());
        ::_exit(0);
    }
    const std::string own = uniqueString();
    std::string other(80, '\0');
    const ssize_t length = ::read(pipe[0], other.data(), other.size());
    (void)::waitpid(child, nullptr, 0);
    ::close(pipe[0]);
    ::close(pipe[1]);
    ASSERT_GT(length, 35);
    // Not only the process number differs.
    EXPECT_NE(own.substr(0, 36), other.substr(0, 36));
}

TEST(ProcessInfo, TellsThreadsApart) {
    std::int32_t other = 0;
    std::thread([&] { other = NS::currentThreadIdentifier(); }).join();
    EXPECT_EQ(NS::currentThreadIdentifier(), ::gettid());
    EXPECT_NE(NS::currentThreadIdentifier(), other);
}

} // namespace
