#include "CustomConsoleLogging/QVLogging.h"

#include "CustomConsoleLogging/Testing/LoggingFixture.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"
#include "Platform/Foundation/UserDefaults.h"

#include <fstream>
#include <map>
#include <sstream>
#include <thread>

namespace {

namespace fs = std::filesystem;

class QVLoggingTest : public Tests::LoggingTest {
  protected:
    static void write(std::string_view message) {
        QVLogging::sharedInstance()->fileMessage_succinct(NS::str(message), false);
    }
    static void writeSuccinctly(std::string_view message) {
        QVLogging::sharedInstance()->fileMessage_succinct(NS::str(message), true);
    }
    static void writeToOwnFile(std::string_view message) {
        QVLogging::sharedInstance()->fileSuccinctMessage(NS::str(message));
    }
    static void setUp(std::string_view prefix = "FE") {
        QVLogging::setupWithPrefix(NS::str(prefix));
    }
};

TEST_F(QVLoggingTest, HasNoSharedInstanceBeforeSetup) {
    EXPECT_FALSE(QVLogging::sharedInstance());
}

TEST_F(QVLoggingTest, TakesPrefixAndFolderAtSetup) {
    setUp();
    EXPECT_EQ(QVLogging::sharedInstance()->prefix()->utf8(), "FE");
    EXPECT_EQ(QVLogging::sharedInstance()->path()->utf8(), logFolder().string() + "/");
}

TEST_F(QVLoggingTest, MakesNothingAtSetup) {
    setUp();
    EXPECT_TRUE(fs::is_empty(folders.data()));
}

TEST_F(QVLoggingTest, ReplacesTheInstanceAtEachSetup) {
    setUp("A");
    const auto first = QVLogging::sharedInstance();
    setUp("B");
    EXPECT_NE(QVLogging::sharedInstance(), first);
    EXPECT_EQ(first->prefix()->utf8(), "A");
}

TEST_F(QVLoggingTest, NamesTheFileByPrefixAndMomentOfTheFirstMessage) {
    setUp();
    clock.set(kNow + 0.58);
    write("first");
    clock.set(kNow + 100);
    write("second");
    EXPECT_EQ(logFiles(), std::vector<std::string>{"FELog-2026-11-16 06:56:27.99.txt"});
}

TEST_F(QVLoggingTest, StampsAMessageAndAddsNothing) {
    setUp();
    write("one");
    write("two\n");
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: one[2026-11-16 06:56:27.41]: two\n");
}

TEST_F(QVLoggingTest, WritesASuccinctMessageAsItIs) {
    setUp();
    writeSuccinctly("one\n");
    writeSuccinctly("two");
    EXPECT_EQ(log(), "one\ntwo");
}

TEST_F(QVLoggingTest, EmptiesAFileOfItsNameAtTheFirstMessageOnly) {
    fs::create_directories(logFolder());
    std::ofstream(logFolder() / "FELog-2026-11-16 06:56:27.41.txt") << "of another run";
    setUp();
    writeSuccinctly("one ");
    writeSuccinctly("two");
    EXPECT_EQ(log(), "one two");
}

TEST_F(QVLoggingTest, WritesBehindWhatOthersAppended) {
    setUp();
    writeSuccinctly("one ");
    std::ofstream(logFolder() / logFiles().front(), std::ios::app) << "foreign ";
    writeSuccinctly("two");
    EXPECT_EQ(log(), "one foreign two");
}

TEST_F(QVLoggingTest, KeepsToTheFirstFileAfterAnotherSetup) {
    setUp("FE");
    writeSuccinctly("one ");
    clock.set(kNow + 60);
    setUp("HOST");
    writeSuccinctly("two");
    EXPECT_EQ(logFiles(), std::vector<std::string>{"FELog-2026-11-16 06:56:27.41.txt"});
    EXPECT_EQ(log(), "one two");
}

TEST_F(QVLoggingTest, TakesTheLatestSetupBeforeTheFirstMessage) {
    setUp("FE");
    setUp("HOST");
    write("one");
    EXPECT_EQ(logFiles(), std::vector<std::string>{"HOSTLog-2026-11-16 06:56:27.41.txt"});
}

TEST_F(QVLoggingTest, DoesNotMakeARemovedFileAgain) {
    setUp();
    write("one");
    fs::remove(logFolder() / logFiles().front());
    write("two");
    writeSuccinctly("three");
    EXPECT_EQ(logFiles(), std::vector<std::string>{});
}

TEST_F(QVLoggingTest, DoesNotMakeARemovedFolderAgain) {
    setUp();
    write("one");
    fs::remove_all(logFolder());
    write("two");
    EXPECT_FALSE(fs::exists(logFolder()));
}

TEST_F(QVLoggingTest, GivesTheSecondWriterAFileOfItsOwn) {
    setUp();
    write("one");
    clock.set(kNow + 1);
    writeToOwnFile("two ");
    clock.set(kNow + 2);
    writeToOwnFile("three");
    EXPECT_EQ(logFiles(), (std::vector<std::string>{"FELog-2026-11-16 06:56:27.41.txt",
                                                    "FELog-2026-11-16 06:56:28.41.txt"}));
    EXPECT_EQ(textOf("FELog-2026-11-16 06:56:28.41.txt"), "two three");
    EXPECT_EQ(textOf("FELog-2026-11-16 06:56:27.41.txt"), "[2026-11-16 06:56:27.41]: one");
}

TEST_F(QVLoggingTest, ShowsAChangeOfTheTimeZoneWithTheNextSecond) {
    setUp();
    write("one\n");
    zone.put("XST-3");
    clock.set(kNow + 1);
    write("two\n");
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: one\n[2026-11-16 09:56:28.41]: two\n");
}

TEST_F(QVLoggingTest, ShowsAClockThatIsSetBackInTheNextMessage) {
    setUp();
    write("one\n");
    clock.set(kNow - 3600.25);
    write("two\n");
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: one\n[2026-11-16 05:56:27.16]: two\n");
}

TEST_F(QVLoggingTest, WritesUtf8) {
    setUp("Pr\xC3\xBC"
          "f");
    writeSuccinctly("caf\xC3\xA9 \xF0\x9F\x90\x9F");
    EXPECT_EQ(logFiles(), std::vector<std::string>{"Pr\xC3\xBC"
                                                   "fLog-2026-11-16 06:56:27.41.txt"});
    EXPECT_EQ(log(), "caf\xC3\xA9 \xF0\x9F\x90\x9F");
}

// The file stays readable as UTF-8 whatever names it tells of.
TEST_F(QVLoggingTest, ReplacesTheBytesOfANameThatIsNotUtf8) {
    setUp();
    QVLogging::sharedInstance()->fileMessage_succinct(
        NS::String::fromFileSystemRepresentation("caf\xE9"), true);
    EXPECT_EQ(log(), "caf\xEF\xBF\xBD");
}

TEST_F(QVLoggingTest, WritesIntoAFolderWhoseNameIsNotUtf8) {
    const Tests::ScopedVariable data("XDG_DATA_HOME", folders.root().string() + "/d\xE9");
    setUp();
    write("one");
    EXPECT_FALSE(fs::is_empty(folders.root() / "d\xE9" / "Quorvane" / "LogDirectory"));
}

TEST_F(QVLoggingTest, WritesNothingForNil) {
    setUp();
    QVLogging::sharedInstance()->fileMessage_succinct(nullptr, true);
    QVLogging::sharedInstance()->fileSuccinctMessage(nullptr);
    EXPECT_EQ(logFiles(), std::vector<std::string>{});
}

TEST_F(QVLoggingTest, NamesTheFileWithoutAPrefix) {
    QVLogging::setupWithPrefix(nullptr);
    write("one");
    EXPECT_EQ(logFiles(), std::vector<std::string>{"(null)Log-2026-11-16 06:56:27.41.txt"});
}

TEST_F(QVLoggingTest, LosesMessagesWhileItHasNoFolder) {
    setUp();
    QVLogging::sharedInstance()->setPath(nullptr);
    write("lost");
    QVLogging::sharedInstance()->setPath(NS::str(logFolder().string() + "/"));
    writeSuccinctly("kept");
    EXPECT_EQ(log(), "kept");
}

TEST_F(QVLoggingTest, LosesMessagesWhereTheFolderCannotBeMade) {
    std::ofstream(folders.data() / "Quorvane") << "no folder";
    setUp();
    write("one");
    writeToOwnFile("two");
    EXPECT_EQ(Tests::contentsOf(folders.data() / "Quorvane"), "no folder");
}

TEST_F(QVLoggingTest, LosesMessagesWhereTheFileCannotBeMade) {
    fs::create_directories(logFolder() / "FELog-2026-11-16 06:56:27.41.txt");
    setUp();
    write("one");
    writeSuccinctly("two");
    EXPECT_TRUE(fs::is_empty(logFolder() / "FELog-2026-11-16 06:56:27.41.txt"));
}

TEST_F(QVLoggingTest, KeepsNoDateOfACrashReport) {
    setUp();
    QVLogging::sharedInstance()->setLastCrashReportDate(NS::Date::date());
    EXPECT_FALSE(QVLogging::sharedInstance()->checkLastCrashReportDate());
}

TEST_F(QVLoggingTest, KeepsTheRunningFlag) {
    setUp();
    const auto logging = QVLogging::sharedInstance();
    EXPECT_FALSE(logging->checkQuitFlag());
    logging->setRunningFlag(true);
    EXPECT_TRUE(logging->checkQuitFlag());
    EXPECT_TRUE(NS::UserDefaults::standardUserDefaults()->boolForKey(*NS::str("running")));
    logging->setRunningFlag(false);
    EXPECT_FALSE(logging->checkQuitFlag());
}

TEST_F(QVLoggingTest, WritesEachMessageInOneTurnOfOpenSeekWriteClose) {
    NS::MemoryFileManager memory;
    const NS::ScopedFileManager scope(memory);
    setUp();
    const std::string file = logFolder().string() + "/FELog-2026-11-16 06:56:27.41.txt";
    writeSuccinctly("12345");
    EXPECT_EQ(memory.takeAccesses(),
              (std::vector<std::string>{"make-folder " + logFolder().string(), "make-file " + file,
                                        "open " + file, "seek", "write 5", "close"}));
    write("12345");
    EXPECT_EQ(memory.takeAccesses(),
              (std::vector<std::string>{"open " + file, "seek", "write 31", "close"}));
}

TEST_F(QVLoggingTest, KeepsTheMessagesOfSeveralThreadsWhole) {
    setUp();
    const auto messageOf = [](int thread) {
        return std::string(60, static_cast<char>('a' + thread));
    };
    constexpr int kThreads = 4;
    constexpr int kMessages = 100;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < kMessages; ++i) {
                write(messageOf(thread) + "\n");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::istringstream text(log());
    std::map<std::string, int> counts;
    for (std::string line; std::getline(text, line);) {
        ++counts[line];
    }
    std::map<std::string, int> expected;
    for (int thread = 0; thread < kThreads; ++thread) {
        expected["[2026-11-16 06:56:27.41]: " + messageOf(thread)] = kMessages;
    }
    EXPECT_EQ(counts, expected);
}

TEST_F(QVLoggingTest, ReplacesAPropertyWhileOthersReadIt) {
    setUp();
    const auto logging = QVLogging::sharedInstance();
    std::thread writer([&] {
        for (int i = 0; i < 1000; ++i) {
            logging->setPrefix(NS::str(i % 2 == 0 ? "even" : "odd"));
        }
    });
    std::size_t characters = 0;
    for (int i = 0; i < 1000; ++i) {
        characters += logging->prefix()->length();
    }
    writer.join();
    EXPECT_GE(characters, 2000U);
    EXPECT_EQ(logging->prefix()->utf8(), "odd");
}

} // namespace
