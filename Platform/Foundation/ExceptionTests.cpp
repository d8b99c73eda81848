#include "Platform/Foundation/Exception.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/CallStack.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace ExceptionTestFunctions {

// The last thing that it does is raise, so that its return address lies behind its own end.
[[gnu::noinline]] void raiseAtItsVeryEnd() {
    NS::Exception::raise(NS::kGenericException, "raised at the end");
}

[[gnu::noinline]] void throwWithoutRaise() {
    throw NS::Exception(NS::str("Thrown"), NS::str("by hand"));
}

[[gnu::noinline]] void throwStandardException() {
    throw std::runtime_error("of the standard library");
}

[[gnu::noinline]] int callWithWorkToDoAfter(void (*function)()) {
    function();
    return 7;
}

} // namespace ExceptionTestFunctions

namespace {

using namespace ExceptionTestFunctions;
using NS::Exception;
using NS::str;
using testing::HasSubstr;
using Tests::raisedException;

std::vector<std::string> linesOf(const NS::Array& array) {
    std::vector<std::string> lines;
    for (const NS::Ref<NS::Object>& each : array) {
        lines.push_back(each->description()->utf8());
    }
    return lines;
}

TEST(Exception, CarriesNameReasonAndFacts) {
    const auto facts = NS::Dictionary::dictionaryWithEntries({
        {"k", str("v")}
    });
    const Exception exception(str("Name"), str("reason"), facts);
    EXPECT_EQ(exception.name()->utf8(), "Name");
    EXPECT_EQ(exception.reason()->utf8(), "reason");
    EXPECT_EQ(exception.userInfo(), NS::RefPtr<NS::Dictionary>(facts));
    EXPECT_STREQ(exception.what(), "Name: reason");
}

TEST(Exception, MayHaveNoReasonAndNoFacts) {
    const Exception exception(str("Name"), nullptr);
    EXPECT_EQ(exception.reason(), nullptr);
    EXPECT_EQ(exception.userInfo(), nullptr);
    EXPECT_STREQ(exception.what(), "Name: (null)");
}

TEST(Exception, SharesItsStateWithItsCopies) {
    static_assert(std::is_nothrow_copy_constructible_v<Exception>);
    static_assert(std::is_nothrow_copy_assignable_v<Exception>);
    const Exception exception(str("Name"), str("reason"));
    const Exception copy = exception; // NOLINT: the copy is what is tested
    EXPECT_EQ(copy.name(), exception.name());
    EXPECT_EQ(copy.what(), exception.what());
    EXPECT_EQ(linesOf(*copy.callStackSymbols()), linesOf(*exception.callStackSymbols()));
}

TEST(Exception, IsRaisedWithNameAndReason) {
    const auto raised = raisedException([] { Exception::raise(NS::kRangeException, "why"); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->name()->utf8(), "NSRangeException");
    EXPECT_EQ(raised->reason()->utf8(), "why");
    EXPECT_EQ(raised->userInfo(), nullptr);
    const auto reason = str("text");
    EXPECT_EQ(raisedException([&] { Exception::raise("Own", reason); })->reason(),
              NS::RefPtr<NS::String>(reason));
}

TEST(Exception, KeepsAReasonThatIsNotUtf8) {
    const auto raised = raisedException([] { Exception::raise("Own", "file a\xFF"); });
    EXPECT_EQ(raised->reason()->fileSystemRepresentation(), "file a\xFF");
}

TEST(Exception, CanBeCaughtAsOneOfTheStandardLibrary) {
    EXPECT_THROW(raiseAtItsVeryEnd(), std::exception);
}

TEST(CallStack, NamesTheFunctionThatRaised) {
    const auto raised = raisedException([] { raiseAtItsVeryEnd(); });
    const auto lines = linesOf(*raised->callStackSymbols());
    ASSERT_GE(lines.size(), 2U);
    EXPECT_THAT(lines[0], HasSubstr(" ExceptionTestFunctions::raiseAtItsVeryEnd() + "));
}

TEST(CallStack, BeginsWithTheFunctionThatMadeTheException) {
    const auto raised = raisedException([] { throwWithoutRaise(); });
    EXPECT_THAT(linesOf(*raised->callStackSymbols()).at(0),
                HasSubstr(" ExceptionTestFunctions::throwWithoutRaise() + "));
}

// Local to this file: only the program file's full table of symbols has its name.
[[gnu::noinline]] void raiseUnexported() {
    NS::Exception::raise(NS::kGenericException, "raised at the end");
}

TEST(CallStack, NamesAFunctionThatTheProgramDoesNotExport) {
    const auto raised = raisedException([] { raiseUnexported(); });
    EXPECT_THAT(linesOf(*raised->callStackSymbols()).at(0), HasSubstr("raiseUnexported() + "));
}

TEST(CallStack, NamesAFunctionOfALibrary) {
    const auto* const start = reinterpret_cast<const char*>(&std::strtol);
    const std::vector<void*> addresses{const_cast<char*>(start) + 1}; // NOLINT: never written
    EXPECT_THAT(NS::CallStack::symbols(addresses).at(0), HasSubstr("strtol + 1"));
}

TEST(CallStack, HasTheModuleForAnAddressWithoutAFunction) {
    static int datum = 0;
    const std::vector<void*> addresses{&datum};
    EXPECT_THAT(NS::CallStack::symbols(addresses).at(0), HasSubstr(" FoundationTests + "));
}

TEST(CallStack, NamesTheCallersToo) {
    const auto raised = raisedException([] { (void)callWithWorkToDoAfter(&raiseAtItsVeryEnd); });
    EXPECT_THAT(linesOf(*raised->callStackSymbols()).at(1),
                HasSubstr(" ExceptionTestFunctions::callWithWorkToDoAfter(void (*)()) + "));
}

TEST(CallStack, HasALineForEachReturnAddress) {
    const Exception exception(str("Name"), nullptr);
    const auto addresses = exception.callStackReturnAddresses();
    const auto lines = linesOf(*exception.callStackSymbols());
    ASSERT_EQ(lines.size(), addresses->count());
    ASSERT_GE(lines.size(), 2U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const NS::RefPtr<NS::Object> address = addresses->objectAtIndex(i);
        std::array<char, 32> hexadecimal{};
        (void)std::snprintf(hexadecimal.data(), hexadecimal.size(), " 0x%016llx ",
                            static_cast<unsigned long long>(NS::longLongValue(address)));
        EXPECT_THAT(lines[i], HasSubstr(hexadecimal.data()));
        EXPECT_EQ(lines[i].substr(0, 4),
                  (std::to_string(i) + "    ").substr(0, 4)); // the index, three wide
    }
}

TEST(CallStack, NamesTheModule) {
    const auto lines = linesOf(*Exception(str("Name"), nullptr).callStackSymbols());
    EXPECT_EQ(lines.at(0).substr(4, 15), "FoundationTests");
}

TEST(CallStack, HasALineForAnAddressThatBelongsToNothing) {
    const std::vector<void*> addresses(13, reinterpret_cast<void*>(0x10));
    EXPECT_EQ(NS::CallStack::symbols(addresses).back(),
              "12  ???                                 0x0000000000000010 ??? + 16");
}

// Recursion that no compiler turns into a loop.
// NOLINTNEXTLINE(misc-no-recursion)
[[gnu::noinline]] std::size_t framesAtDepth(std::size_t depth) {
    volatile std::size_t result = 0;
    result = depth == 0 ? NS::CallStack::captureFrom(nullptr).size() : framesAtDepth(depth - 1);
    return result;
}

TEST(CallStack, HasAnEnd) {
    EXPECT_GT(framesAtDepth(10), 10U);
    EXPECT_LE(framesAtDepth(1000), 128U);
}

class UncaughtExceptionDeathTest : public testing::Test {
  protected:
    // What a handler sees, on the standard error.
    static void tell(const Exception& exception) {
        std::fprintf(stderr, "handler: %s\n", exception.what());
        for (const std::string& line : linesOf(*exception.callStackSymbols())) {
            std::fprintf(stderr, "frame %s\n", line.c_str());
        }
    }
    static void raiseAgain(const Exception& exception) {
        std::fprintf(stderr, "handler: %s\n", exception.what());
        Exception::raise("Second", "from the handler");
    }

    // Nothing catches on a thread of its own; the tests' own frames would.
    static void runUncaught(NS::UncaughtExceptionHandler handler, void (*act)()) {
        NS::setUncaughtExceptionHandler(handler);
        std::thread(act).join();
    }

    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    const testing::KilledBySignal aborted{SIGABRT};
};

TEST_F(UncaughtExceptionDeathTest, ReachesTheHandlerAndAborts) {
    EXPECT_EXIT(runUncaught(&tell, &raiseAtItsVeryEnd), aborted,
                "handler: NSGenericException: raised at the end");
}

TEST_F(UncaughtExceptionDeathTest, ShowsTheHandlerWhereItWasRaised) {
    EXPECT_EXIT(runUncaught(&tell, &raiseAtItsVeryEnd), aborted,
                "frame 0 .*ExceptionTestFunctions::raiseAtItsVeryEnd");
}

TEST_F(UncaughtExceptionDeathTest, IsReportedOnTheStandardErrorAfterTheHandler) {
    EXPECT_EXIT(runUncaught(&tell, &raiseAtItsVeryEnd), aborted,
                "handler: (.|\n)*Terminating due to uncaught exception NSGenericException: raised "
                "at the end");
    EXPECT_EXIT(runUncaught(nullptr, &raiseAtItsVeryEnd), aborted,
                "Terminating due to uncaught exception NSGenericException: raised at the end");
}

TEST_F(UncaughtExceptionDeathTest, OfTheStandardLibraryReachesTheHandlerWithItsText) {
    EXPECT_EXIT(runUncaught(&tell, &throwStandardException), aborted,
                "handler: NSGenericException: of the standard library");
}

TEST_F(UncaughtExceptionDeathTest, OfTheStandardLibraryShowsWhereItWasThrown) {
    EXPECT_EXIT(runUncaught(&tell, &throwStandardException), aborted,
                "frame [0-9]+ .*ExceptionTestFunctions::throwStandardException");
}

TEST_F(UncaughtExceptionDeathTest, OfAnotherTypeReachesTheHandler) {
    EXPECT_EXIT(runUncaught(&tell, [] { throw 5; }), aborted,
                "handler: NSGenericException: exception of an unknown type");
}

TEST_F(UncaughtExceptionDeathTest, AbortsAlsoWhenTheHandlerRaises) {
    EXPECT_EXIT(runUncaught(&raiseAgain, &raiseAtItsVeryEnd), aborted,
                "handler: NSGenericException: raised at the end\n"
                "(.|\n)*handler of uncaught exceptions raised(.|\n)*Terminating due to uncaught "
                "exception NSGenericException: raised at the end");
}

TEST_F(UncaughtExceptionDeathTest, AbortsAlsoWhenTheHandlerTerminates) {
    EXPECT_EXIT(runUncaught([](const Exception&) { std::terminate(); }, &raiseAtItsVeryEnd),
                aborted, "");
}

// What a signal handler at the very end finds recorded.
void tellTheRecord(int) {
    const NS::UncaughtExceptionRecord* const record = NS::uncaughtExceptionRecord();
    if (record == nullptr) {
        std::fputs("nothing recorded\n", stderr);
        return;
    }
    std::fprintf(stderr, "recorded %s: %s, %zu\n", record->name.data(), record->reason.data(),
                 record->depth);
    const auto addresses = std::span(record->returnAddresses).first(record->depth);
    for (const std::string& line : NS::CallStack::symbols(addresses)) {
        std::fprintf(stderr, "frame %s\n", line.c_str());
    }
}

TEST_F(UncaughtExceptionDeathTest, IsRecordedForASignalHandler) {
    (void)std::signal(SIGABRT, &tellTheRecord);
    NS::handleUncaughtExceptions();
    EXPECT_EXIT(std::thread(&raiseAtItsVeryEnd).join(), aborted,
                "recorded NSGenericException: raised at the end, [1-9](.|\n)*frame 0 "
                ".*ExceptionTestFunctions::raiseAtItsVeryEnd");
    (void)std::signal(SIGABRT, SIG_DFL);
}

TEST_F(UncaughtExceptionDeathTest, OfTheStandardLibraryIsRecordedWithItsType) {
    (void)std::signal(SIGABRT, &tellTheRecord);
    NS::handleUncaughtExceptions();
    EXPECT_EXIT(std::thread(&throwStandardException).join(), aborted,
                "recorded std::runtime_error: of the standard library, 0\n");
    (void)std::signal(SIGABRT, SIG_DFL);
}

TEST_F(UncaughtExceptionDeathTest, IsRecordedAsFarAsThereIsRoom) {
    (void)std::signal(SIGABRT, &tellTheRecord);
    const auto raiseLong = [] {
        throw NS::Exception(NS::str("Long"), NS::str(std::string(9000, 'x')));
    };
    NS::handleUncaughtExceptions();
    EXPECT_EXIT(std::thread(raiseLong).join(), aborted, "recorded Long: x{4095}, ");
    (void)std::signal(SIGABRT, SIG_DFL);
}

TEST_F(UncaughtExceptionDeathTest, IsNotRecordedWhenThereIsNone) {
    (void)std::signal(SIGABRT, &tellTheRecord);
    NS::handleUncaughtExceptions();
    EXPECT_EXIT(std::terminate(), aborted, "nothing recorded\n");
    (void)std::signal(SIGABRT, SIG_DFL);
}

TEST_F(UncaughtExceptionDeathTest, ReachesTheHandlerSetLast) {
    EXPECT_EXIT(
        {
            NS::setUncaughtExceptionHandler(&raiseAgain);
            runUncaught([](const Exception&) { std::fputs("the later one\n", stderr); },
                        &raiseAtItsVeryEnd);
        },
        aborted, "the later one");
}

TEST_F(UncaughtExceptionDeathTest, OfTwoThreadsIsHandledOnce) {
    const auto raiseOnTwoThreads = [] {
        // Long enough at work for the other thread to raise as well.
        NS::setUncaughtExceptionHandler([](const Exception&) {
            std::fputs("begin ", stderr);
            volatile unsigned work = 50'000'000;
            while (work != 0) {
                work = work - 1;
            }
            std::fputs("end\n", stderr);
        });
        std::thread first(&raiseAtItsVeryEnd);
        std::thread second(&raiseAtItsVeryEnd);
        first.join();
        second.join();
    };
    EXPECT_EXIT(raiseOnTwoThreads(), aborted, "^begin end\n\\*\\*\\* Terminating");
}

TEST_F(UncaughtExceptionDeathTest, IsNotMistakenForAnEndWithoutException) {
    const auto endWithoutException = [] {
        NS::setUncaughtExceptionHandler(&tell);
        std::terminate();
    };
    EXPECT_EXIT(endWithoutException(), aborted, "^(WARNING.*\n)?.*without an exception\n$");
}

} // namespace
