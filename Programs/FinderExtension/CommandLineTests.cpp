#include "Programs/FinderExtension/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace {

using testing::AllOf;
using testing::HasSubstr;

std::optional<CommandLineReply> replyTo(std::initializer_list<const char*> arguments) {
    std::vector<const char*> commandLine{"./extension"};
    commandLine.insert(commandLine.end(), arguments);
    return replyToCommandLine(commandLine);
}

TEST(CommandLine, AsksForNothingWhenItIsEmpty) {
    EXPECT_FALSE(replyTo({}).has_value());
    EXPECT_FALSE(replyTo({"--"}).has_value());
    EXPECT_FALSE(replyToCommandLine({}).has_value());
}

TEST(CommandLine, AsksForHelp) {
    for (const char* const option : {"-h", "--help"}) {
        const auto reply = replyTo({option});
        ASSERT_TRUE(reply.has_value());
        EXPECT_EQ(reply->status, 0);
        EXPECT_THAT(reply->text, AllOf(HasSubstr("Usage: ./extension [OPTIONS]\n"),
                                       HasSubstr("--help"), HasSubstr("--version")));
    }
}

TEST(CommandLine, AsksForTheVersion) {
    const auto reply = replyTo({"--version"});
    ASSERT_TRUE(reply.has_value());
    EXPECT_EQ(reply->status, 0);
    EXPECT_EQ(reply->text, "quorvane-finder-extension " QUORVANE_VERSION "\n");
}

TEST(CommandLine, HasAnOptionThatIsNotExpected) {
    for (const char* const option : {"--no-such-option", "-x", "--he", "--help=yes", ""}) {
        const auto reply = replyTo({option});
        ASSERT_TRUE(reply.has_value());
        EXPECT_EQ(reply->status, 109);
        EXPECT_EQ(reply->text, "The following argument was not expected: " + std::string(option) +
                                   "\nRun with --help for more information.\n");
    }
}

TEST(CommandLine, HasAnArgumentThatIsNotExpected) {
    for (const auto& reply : {replyTo({"a", "--help"}), replyTo({"--", "a"})}) {
        EXPECT_THAT(reply.value().text, HasSubstr("argument was not expected: a\n"));
    }
}

TEST(CommandLine, HasNoOptionsBehindTheirEnd) {
    EXPECT_THAT(replyTo({"--", "--help"}).value().text,
                HasSubstr("argument was not expected: --help\n"));
}

} // namespace
