#include "CustomConsoleLogging/Testing/ReportsFixture.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"
#include "Tests/Support/PeakMemory.h"

namespace {

namespace fs = std::filesystem;

class ProcessedReport : public Tests::ReportsTest {
  protected:
    ProcessedReport() { fs::create_directories(logFolder()); }

    fs::path marker() const { return logFolder() / "PLPCR.s"; }
    static bool write(std::string_view path) {
        return logging().writePathOfLastProcessedCrashReport(
            NS::String::fromFileSystemRepresentation(path));
    }
    static std::string saved() {
        return bytesOf(logging().getSavedPathOfLastGeneratedCrashReport());
    }
};

TEST_F(ProcessedReport, ComesBackAsItWasWritten) {
    ASSERT_TRUE(write("/reports/Fennmoor \xC3\xA9 \xF0\x9F\x90\x9F.crash"));
    EXPECT_EQ(Tests::contentsOf(marker()), "/reports/Fennmoor \xC3\xA9 \xF0\x9F\x90\x9F.crash");
    EXPECT_EQ(saved(), "/reports/Fennmoor \xC3\xA9 \xF0\x9F\x90\x9F.crash");
}

TEST_F(ProcessedReport, ReplacesTheOneBefore) {
    ASSERT_TRUE(write("/reports/a long path of a report.crash"));
    ASSERT_TRUE(write("/b"));
    EXPECT_EQ(saved(), "/b");
    ASSERT_TRUE(write(""));
    EXPECT_EQ(saved(), "");
}

TEST_F(ProcessedReport, IsReadWithAllThatTheMarkerHolds) {
    put(marker(), " /a\n/b \n");
    EXPECT_EQ(saved(), " /a\n/b \n");
}

TEST_F(ProcessedReport, IsNilWithoutAMarker) {
    EXPECT_EQ(saved(), "(nil)");
    fs::remove_all(logFolder());
    EXPECT_EQ(saved(), "(nil)");
}

TEST_F(ProcessedReport, IsNotWrittenWithoutTheFolder) {
    fs::remove_all(logFolder());
    EXPECT_FALSE(write("/a"));
    EXPECT_FALSE(fs::exists(logFolder()));
}

TEST_F(ProcessedReport, IsNilWhereTheMarkerIsNotUtf8) {
    put(marker(), "/reports/ren\xE9.crash");
    EXPECT_EQ(saved(), "(nil)");
}

// UTF-8 has no form for such a name, and one with a character in its place would name nothing.
TEST_F(ProcessedReport, IsNotWrittenWhenItsNameIsNotUtf8) {
    ASSERT_TRUE(write("/a"));
    EXPECT_FALSE(write("/reports/ren\xE9.crash"));
    EXPECT_FALSE(logging().writePathOfLastProcessedCrashReport(nullptr));
    EXPECT_EQ(saved(), "/a");
}

TEST_F(ProcessedReport, IsNeitherReadNorWrittenWhereTheMarkerIsAFolder) {
    fs::create_directories(marker() / "kept");
    EXPECT_EQ(saved(), "(nil)");
    EXPECT_FALSE(write("/a"));
    EXPECT_TRUE(fs::exists(marker() / "kept"));
    EXPECT_EQ(logFiles(), std::vector<std::string>{"PLPCR.s"});
}

TEST_F(ProcessedReport, TakesNoMemoryForAMarkerOfAGibibyte) {
    put(marker());
    fs::resize_file(marker(), std::uintmax_t{1} << 30U);
    std::string path;
    EXPECT_LT(Tests::peakMemoryOf([&] { path = saved(); }), std::size_t{64} << 20U);
    EXPECT_EQ(path, "(nil)");
}

TEST_F(ProcessedReport, IsKeptInTheUsersFolderWhereverTheInstanceLogs) {
    logging().setPath(NS::str("/elsewhere/"));
    ASSERT_TRUE(write("/a"));
    EXPECT_EQ(Tests::contentsOf(marker()), "/a");
}

TEST_F(ProcessedReport, IsPrunedLikeALog) {
    ASSERT_TRUE(write("/a"));
    putAfter(marker(), logFolder() / "FELog-a.txt");
    logging().cleanupLogsFolder_maxItems(logging().path(), 1);
    EXPECT_EQ(logFiles(), std::vector<std::string>{"FELog-a.txt"});
    EXPECT_EQ(saved(), "(nil)");
}

class ProcessedReportBeforeSetup : public Tests::LoggingTest {};

TEST_F(ProcessedReportBeforeSetup, IsKeptAllTheSame) {
    fs::create_directories(logFolder());
    const auto logging = NS::make<QVLogging>();
    EXPECT_TRUE(logging->writePathOfLastProcessedCrashReport(NS::str("/a")));
    EXPECT_EQ(logging->getSavedPathOfLastGeneratedCrashReport()->utf8(), "/a");
}

// createAFileAtPath:byFileManager:withContent:
class CreatedFile : public Tests::ReportsTest {
  protected:
    fs::path file() const { return folders.root() / "file"; }
    static bool create(const fs::path& path, const NS::RefPtr<NS::Data>& content,
                       NS::FileManager& files = NS::FileManager::defaultManager()) {
        return logging().createAFileAtPath_byFileManager_withContent(
            NS::String::fromFileSystemRepresentation(path.string()), files, content);
    }
    static NS::Ref<NS::Data> content() { return NS::Data::dataWithBytes(NS::bytesOf("new")); }
};

TEST_F(CreatedFile, HasTheContent) {
    EXPECT_TRUE(create(file(), content()));
    EXPECT_EQ(Tests::contentsOf(file()), "new");
    EXPECT_TRUE(create(folders.root() / "empty", nullptr));
    EXPECT_TRUE(fs::is_empty(folders.root() / "empty"));
}

TEST_F(CreatedFile, LeavesWhatIsThereAsItIs) {
    put(file(), "old");
    EXPECT_TRUE(create(file(), content()));
    EXPECT_EQ(Tests::contentsOf(file()), "old");
    EXPECT_TRUE(create(reports(), content()));
    EXPECT_TRUE(fs::is_directory(reports()));
}

TEST_F(CreatedFile, IsToldAlsoWhenItCannotBeMade) {
    EXPECT_TRUE(create(folders.root() / "absent" / "file", content()));
    EXPECT_FALSE(fs::exists(folders.root() / "absent"));
    EXPECT_TRUE(logging().createAFileAtPath_byFileManager_withContent(
        nullptr, NS::FileManager::defaultManager(), content()));
}

TEST_F(CreatedFile, IsMadeByTheFileManagerThatIsGiven) {
    NS::MemoryFileManager files;
    EXPECT_TRUE(create("/file", content(), files));
    EXPECT_EQ(files.textOf("/file"), "new");
    files.addFile("/there", 0, "old");
    EXPECT_TRUE(create("/there", content(), files));
    EXPECT_EQ(files.textOf("/there"), "old");
}

} // namespace
