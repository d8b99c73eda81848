#include "Programs/FinderExtension/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
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

TEST(CommandLine, AsksForTheVersionBeforeAnythingElse) {
    for (const auto& reply :
         {replyTo({"--version"}), replyTo({"--help", "--version"}), replyTo({"x", "--version"})}) {
        ASSERT_TRUE(reply.has_value());
        EXPECT_EQ(reply->status, 0);
        EXPECT_EQ(reply->text, "quorvane-finder-extension " QUORVANE_VERSION "\n");
    }
}

TEST(CommandLine, AsksForHelpBesideWhatIsNotExpected) {
    EXPECT_EQ(replyTo({"x", "--help"}).value().status, 0);
}

TEST(CommandLine, HasAnArgumentThatIsNotExpected) {
    const auto reply = replyTo({"--no-such-option"});
    ASSERT_TRUE(reply.has_value());
    EXPECT_EQ(reply->status, 109);
    EXPECT_EQ(reply->text, "The following argument was not expected: --no-such-option\n"
                           "Run with --help for more information.\n");
}

TEST(CommandLine, HasArgumentsThatAreNotExpected) {
    EXPECT_THAT(replyTo({"a", ""}).value().text, HasSubstr("arguments were not expected: a \n"));
}

TEST(CommandLine, HasNoOptionsBehindTheirEnd) {
    EXPECT_THAT(replyTo({"--", "--help"}).value().text,
                HasSubstr("argument was not expected: --help\n"));
}

} // namespace
