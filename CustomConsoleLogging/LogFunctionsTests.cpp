#include "CustomConsoleLogging/consoleLogging.h"

#include "CustomConsoleLogging/Testing/LoggingFixture.h"
#include "Platform/Foundation/Array.h"

#include <csignal>
#include <functional>
#include <sstream>

namespace {

// An object that logs while it is described.
class Talkative final : public NS::Object {
  public:
    NS::Ref<NS::String> description() const override {
        _Log("DEBUG ", nullptr, 0, nullptr, "asked");
        return NS::str("described");
    }
};

class LogFunctions : public Tests::LoggingTest {
  protected:
    static void setUp() { QVLogging::setupWithPrefix(NS::str("FE")); }
    static void expectRaised(const std::function<void()>& act) {
        EXPECT_THROW(act(), NS::Exception);
    }
};

TEST_F(LogFunctions, WriteNothingBeforeSetup) {
    _Log("DEBUG ", __FILE__, __LINE__, "-[Test body]", "lost %@", NS::str("message"));
    _SuccinctlyLog("DEBUG ", __FILE__, __LINE__, "-[Test body]", "lost");
    EXPECT_TRUE(std::filesystem::is_empty(folders.data()));
    setUp();
    _SuccinctlyLog("DEBUG ", __FILE__, __LINE__, "-[Test body]", "kept");
    EXPECT_EQ(log(), "kept\n");
}

TEST_F(LogFunctions, WriteNothingBeforeSetupIntoAFileThatIsThere) {
    const auto own = NS::make<QVLogging>();
    own->setPath(NS::str(logFolder().string() + "/"));
    own->fileMessage_succinct(NS::str(""), true);
    own->fileMessage_succinct(NS::str("kept\n"), true);
    _Log("DEBUG ", nullptr, 0, nullptr, "lost");
    _SuccinctlyLog("DEBUG ", nullptr, 0, nullptr, "lost");
    EXPECT_EQ(log(), "kept\n");
}

TEST_F(LogFunctions, MakeFolderAndFileWithTheFirstLine) {
    setUp();
    _Log("DEBUG ", __FILE__, __LINE__, "-[Test body]", "initial init at %@, %d", NS::str("A"), 7);
    EXPECT_EQ(logFiles(), std::vector<std::string>{"FELog-2026-11-16 06:56:27.41.txt"});
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: initial init at A, 7\n");
}

TEST_F(LogFunctions, ReadTheClockOnceForEachStamp) {
    clock.set(816504987.99);
    setUp();
    clock.setTick(0.01);
    _Log("DEBUG ", nullptr, 0, nullptr, "late");
    // The coarse stamp comes first, the file's name second, the fine stamp last.
    EXPECT_EQ(logFiles(), std::vector<std::string>{"FELog-2026-11-16 06:56:28.00.txt"});
    EXPECT_EQ(log(), "[2026-11-16 06:56:28.01]: [2026-11-16 06:56:27]: late\n");
}

TEST_F(LogFunctions, StampOnlyTheFirstLineOfAMessage) {
    setUp();
    _Log("DEBUG ", nullptr, 0, nullptr, "%@",
         NS::Array::arrayWithObjects({NS::str("a"), NS::str("b")}));
    _Log("DEBUG ", nullptr, 0, nullptr, "one\n\ntwo\n");
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: (\n    a,\n    b\n)\n"
                     "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: one\n\ntwo\n\n");
}

TEST_F(LogFunctions, WriteASuccinctLineIntoTheSameFile) {
    setUp();
    _Log("DEBUG ", nullptr, 0, nullptr, "stamped");
    _SuccinctlyLog("DEBUG ", nullptr, 0, nullptr, "%d bare", 1);
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: stamped\n1 bare\n");
}

TEST_F(LogFunctions, WriteNilAsTheyDescribeIt) {
    setUp();
    _SuccinctlyLog("DEBUG ", nullptr, 0, nullptr, "%@ %s", nullptr,
                   static_cast<const char*>(nullptr));
    EXPECT_EQ(log(), "(null) (null)\n");
}

TEST_F(LogFunctions, ShowNeitherLevelNorOrigin) {
    setUp();
    _Log("LEVEL ", "/source/File.m", 4711, "-[Some method]", "message");
    _SuccinctlyLog("LEVEL ", "/source/File.m", 4711, "-[Some method]", "message");
    EXPECT_EQ(logFiles(), std::vector<std::string>{"FELog-2026-11-16 06:56:27.41.txt"});
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: message\nmessage\n");
}

TEST_F(LogFunctions, TakeAnOriginInOnePiece) {
    setUp();
    _Log("DEBUG ", LogOrigin::here("-[Test body]"), "%d", 1);
    _SuccinctlyLog("DEBUG ", LogOrigin::here("-[Test body]"), "%d", 2);
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: 1\n2\n");
}

TEST_F(LogFunctions, WriteUtf8) {
    setUp();
    _Log("DEBUG ", nullptr, 0, nullptr, "caf\xC3\xA9 %@", NS::str("\xE2\x82\xAC"));
    _SuccinctlyLog("DEBUG ", nullptr, 0, nullptr, "%@", NS::str("\xE2\x82\xAC"));
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: "
                     "caf\xC3\xA9 \xE2\x82\xAC\n\xE2\x82\xAC\n");
}

TEST_F(LogFunctions, RaiseForAFormatThatIsWrong) {
    setUp();
    expectRaised([] { _Log("DEBUG ", nullptr, 0, nullptr, "%@ %@", NS::str("one")); });
    expectRaised([] { _SuccinctlyLog("DEBUG ", nullptr, 0, nullptr, "%d", NS::str("one")); });
    EXPECT_EQ(logFiles(), std::vector<std::string>{});
}

TEST_F(LogFunctions, TakeALineOfAnArgumentThatLogsItself) {
    setUp();
    _SuccinctlyLog("DEBUG ", nullptr, 0, nullptr, "%@", NS::make<Talkative>());
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: asked\ndescribed\n");
}

TEST_F(LogFunctions, WriteALineOfAnyLength) {
    setUp();
    const std::string text(300000, 'x');
    _Log("DEBUG ", nullptr, 0, nullptr, "%@", NS::str(text));
    _Log("DEBUG ", nullptr, 0, nullptr, "next");
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: " + text +
                         "\n[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: next\n");
}

TEST_F(LogFunctions, KnowWhereTheyAreCalled) {
    constexpr LogOrigin kOrigin = LogOrigin::here("-[Test body]");
    EXPECT_EQ(kOrigin.line, __LINE__ - 1);
    EXPECT_TRUE(std::string_view(kOrigin.file).ends_with("LogFunctionsTests.cpp"));
    EXPECT_STREQ(kOrigin.function, "-[Test body]");
}

// The bytes that the page on log files shows: hexadecimal pairs in the columns of a dump.
std::string exampleOfThePage() {
    std::istringstream page(Tests::contentsOf(LOG_FILES_PAGE));
    std::string bytes;
    for (std::string line; std::getline(page, line);) {
        const bool isDump = line.size() > 58 && line.starts_with("    00") && line[8] == ' ';
        std::istringstream pairs(isDump ? line.substr(10, 48) : "");
        for (std::string pair; pairs >> pair;) {
            bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
        }
    }
    return bytes;
}

TEST_F(LogFunctions, WriteTheExampleOfThePage) {
    setUp();
    _Log("DEBUG ", nullptr, 0, nullptr, "received init at %@", NS::str("/home/mia/Drive"));
    EXPECT_EQ(log(), exampleOfThePage());
}

// An exception in a process of its own.
class UncaughtException : public Tests::LoggingTest {
  protected:
    static void setUp() { QVLogging::setupWithPrefix(NS::str("FE")); }

    std::optional<int> runToItsEnd(std::vector<std::string> arguments) const {
        Tests::Process process(RAISING_PROGRAM, std::move(arguments), folders.root() / "out",
                               folders.root() / "err");
        return process.waitForExit();
    }

    // The log's lines without the stamps before them.
    std::vector<std::string> loggedMessages() const {
        constexpr std::size_t kStamps = sizeof("[2026-11-16 06:56:27.41]: "
                                               "[2026-11-16 06:56:27]: ") -
                                        1;
        std::vector<std::string> messages;
        std::istringstream text(log());
        for (std::string line; std::getline(text, line);) {
            messages.push_back(line.size() < kStamps ? line : line.substr(kStamps));
        }
        return messages;
    }

    static std::vector<std::string> linesOf(const std::string& text) {
        std::vector<std::string> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }
};

TEST_F(UncaughtException, IsLoggedWithItsReasonUserInfoAndEachFrame) {
    const std::filesystem::path frames = folders.root() / "frames";
    EXPECT_EQ(runToItsEnd({frames}), 128 + SIGABRT);
    const std::vector<std::string> expectedFrames = linesOf(Tests::contentsOf(frames));
    // The user info is a description of three lines.
    std::vector<std::string> expected{"started", "================= Exception: the drive is gone"};
    expected.insert(expected.end(), {"{", "    code = 7;", "}"});
    expected.insert(expected.end(), expectedFrames.begin(), expectedFrames.end());
    std::vector<std::string> logged = loggedMessages();
    ASSERT_GT(expectedFrames.size(), 2U);
    ASSERT_EQ(logged.size(), expected.size());
    // The stamps stand before the first of the three only.
    const std::vector<std::string> all = linesOf(log());
    logged[3] = all[3];
    logged[4] = all[4];
    EXPECT_EQ(logged, expected);
}

TEST_F(UncaughtException, ShowsWhereItWasRaised) {
    (void)runToItsEnd({folders.root() / "frames"});
    EXPECT_NE(log().find(" Raising::raiseDeepInside("), std::string::npos) << log();
}

TEST_F(UncaughtException, OfTheLanguagesOwnKindIsLoggedToo) {
    EXPECT_EQ(runToItsEnd({}), 128 + SIGABRT);
    const std::vector<std::string> logged = loggedMessages();
    ASSERT_GT(logged.size(), 2U);
    EXPECT_EQ(logged[0], "================= Exception: no file for the frames");
    EXPECT_EQ(logged[1], "(null)");
    EXPECT_NE(logged[2].find(" :: 0 "), std::string::npos) << logged[2];
}

TEST_F(UncaughtException, FromWithinALineIsLoggedToo) {
    EXPECT_EQ(runToItsEnd({"--while-logging"}), 128 + SIGABRT);
    const std::vector<std::string> logged = loggedMessages();
    ASSERT_GT(logged.size(), 2U);
    EXPECT_EQ(logged[0], "started");
    EXPECT_EQ(logged[1], "================= Exception: the clock stands still");
}

TEST_F(UncaughtException, GivesNPlusTwoMessagesForNFrames) {
    setUp();
    const NS::Exception exception(NS::str("Name"), NS::str("reason"));
    exceptionHandler(exception);
    const std::vector<std::string> logged = loggedMessages();
    ASSERT_EQ(logged.size(), exception.callStackSymbols()->count() + 2);
    EXPECT_EQ(logged[0], "================= Exception: reason");
    EXPECT_EQ(logged[1], "(null)");
    EXPECT_EQ(logged[2],
              exception.callStackReturnAddresses()->firstObject()->description()->utf8() +
                  " :: " + exception.callStackSymbols()->firstObject()->description()->utf8());
}

TEST_F(UncaughtException, WithoutAReasonIsLogged) {
    setUp();
    exceptionHandler(NS::Exception(NS::str("Name"), nullptr));
    EXPECT_EQ(loggedMessages()[0], "================= Exception: (null)");
}

} // namespace
