#include "CustomConsoleLogging/Testing/ReportsFixture.h"
#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// By modification date: findNewestFileAt:prefixed: and the two that ask it.
class NewestFile : public Tests::ReportsTest {
  protected:
    static NS::Ref<NS::Array> prefixes(std::initializer_list<std::string_view> texts) {
        const auto list = NS::make<NS::MutableArray>();
        for (const std::string_view text : texts) {
            list->addObject(NS::str(text));
        }
        return list;
    }
    static std::string newest(const fs::path& folder,
                              std::initializer_list<std::string_view> texts) {
        return bytesOf(logging().findNewestFileAt_prefixed(
            NS::String::fromFileSystemRepresentation(folder.string()), prefixes(texts)));
    }
    void putModified(const std::string& name, long seconds) const {
        put(reports() / name);
        modify(reports() / name, seconds);
    }
};

TEST_F(NewestFile, IsTheOneModifiedLastWhateverItsCreation) {
    putModified("Fennmoor_2", 3000);
    putAfter(reports() / "Fennmoor_2", reports() / "Fennmoor_1");
    modify(reports() / "Fennmoor_1", 2000);
    putModified("Fennmoor_3", 1000);
    EXPECT_EQ(newest(reports(), {"Fennmoor"}), reports() / "Fennmoor_2");
}

TEST_F(NewestFile, IsToldByFractionsOfASecond) {
    for (const long nanoseconds : {500'000'000L, 501'000'000L, 499'000'000L}) {
        const fs::path file = reports() / ("a" + std::to_string(nanoseconds));
        put(file);
        const timespec times[] = {
            {0,          UTIME_OMIT },
            {1794812187, nanoseconds}
        };
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    }
    EXPECT_EQ(newest(reports(), {"a"}), reports() / "a501000000");
}

TEST_F(NewestFile, BeginsWithAnyOfThePrefixes) {
    putModified("c1", 4000);
    putModified("b1", 3000);
    putModified("a1", 2000);
    EXPECT_EQ(newest(reports(), {"a", "b"}), reports() / "b1");
    EXPECT_EQ(newest(reports(), {"1"}), "(nil)");
    EXPECT_EQ(newest(reports(), {"A"}), "(nil)");
}

TEST_F(NewestFile, NeedsNoSuffix) {
    putModified("Fennmoor.txt", 1000);
    EXPECT_EQ(newest(reports(), {"Fennmoor"}), reports() / "Fennmoor.txt");
}

TEST_F(NewestFile, IsNoneForAnEmptyListOfPrefixes) {
    putModified("Fennmoor.txt", 1000);
    EXPECT_EQ(newest(reports(), {}), "(nil)");
    EXPECT_EQ(bytesOf(logging().findNewestFileAt_prefixed(NS::str(reports().string()), nullptr)),
              "(nil)");
}

TEST_F(NewestFile, IsNoneWithoutAFolder) {
    put(folders.root() / "file");
    EXPECT_EQ(newest(reports(), {"a"}), "(nil)");
    EXPECT_EQ(newest(folders.root() / "absent", {"a"}), "(nil)");
    EXPECT_EQ(newest(folders.root() / "file", {"f"}), "(nil)");
    EXPECT_FALSE(logging().findNewestFileAt_prefixed(nullptr, prefixes({"a"})));
}

TEST_F(NewestFile, MayBeAFolderOrALinkButNothingDeeper) {
    fs::create_directory(reports() / "a_folder");
    putModified("a_folder/a_deep", 9000);
    fs::create_symlink("a_folder/a_deep", reports() / "a_link");
    modify(reports() / "a_folder", 1000);
    modify(reports() / "a_link", 500);
    EXPECT_EQ(newest(reports(), {"a"}), reports() / "a_folder");
}

TEST_F(NewestFile, KeepsANameThatIsNotUtf8) {
    putModified("a\xE9", 2000);
    putModified("a", 1000);
    EXPECT_EQ(newest(reports(), {"a"}), (reports() / "a\xE9").string());
}

TEST_F(NewestFile, IsTheLastListedOfThoseOfOneDate) {
    for (const char* const name : {"a1", "a2", "a3", "a4"}) {
        putModified(name, 1000);
    }
    EXPECT_EQ(newest(reports(), {"a"}), reports() / listed(reports()).back());
}

// A folder so deep that one name fits behind its path and the other, longer one no longer does.
TEST_F(NewestFile, HasADateThatCanBeRead) {
    constexpr std::size_t kLongestPath = 4095;
    fs::path folder = reports();
    while (folder.string().size() < kLongestPath - 203) {
        folder /= std::string(99, 'd');
    }
    folder /= std::string(kLongestPath - 3 - folder.string().size(), 'd');
    fs::create_directories(folder);
    const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (const char* const name : {"a", "aaaa", "aaaaa"}) {
        ::close(::openat(directory, name, O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    }
    ::close(directory);
    modify(folder / "a", 1000);
    EXPECT_EQ(newest(folder, {"a"}), folder / "a");
    ASSERT_TRUE(fs::remove(folder / "a"));
    EXPECT_EQ(newest(folder, {"a"}), folder / listed(folder).back());
}

TEST_F(NewestFile, HasADateThatCanBeReadWhateverTheOrder) {
    NS::MemoryFileManager files;
    for (const char* const path : {"/a_first", "/a_dated", "/a_last"}) {
        files.addFile(path);
    }
    files.hideAttributesOf("/a_first");
    files.hideAttributesOf("/a_last");
    const NS::ScopedFileManager scope(files);
    EXPECT_EQ(newest("/", {"a"}), "/a_dated");
    EXPECT_EQ(newest("/", {"a_f", "a_l"}), "/a_last");
}

TEST_F(NewestFile, RefusesAPrefixThatIsNoText) {
    put(reports() / "a");
    EXPECT_THROW(
        (void)logging().findNewestFileAt_prefixed(
            NS::str(reports().string()), NS::Array::arrayWithObjects({NS::make<NS::Date>(0.0)})),
        NS::Exception);
}

TEST_F(NewestFile, OfTheClientIsWhicheverWasModifiedLast) {
    putModified("Fennmoor_2026-11-16-065627_host.crash", 2000);
    putModified("Other_2026-11-16-065627_host.crash", 9000);
    putModified("QVFinderExtension_x.hang", 1000);
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticReport()),
              reports() / "Fennmoor_2026-11-16-065627_host.crash");
    modify(reports() / "QVFinderExtension_x.hang", 3000);
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticReport()), reports() / "QVFinderExtension_x.hang");
    putModified("Crestwarden", 4000);
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticReport()), reports() / "Crestwarden");
}

TEST_F(NewestFile, OfTheRetiredIsLookedForAmongThemAlone) {
    putModified("Fennmoor_new.crash", 9000);
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticRetiredReport()), "(nil)");
    fs::create_directory(retired());
    putModified("Retired/Crestwarden_b.crash", 2000);
    putModified("Retired/Fennmoor_a.crash", 1000);
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticRetiredReport()),
              retired() / "Crestwarden_b.crash");
    putModified("Retired/QVFinderExtension_c.crash", 3000);
    putModified("Retired/Other_d.crash", 4000);
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticRetiredReport()),
              retired() / "QVFinderExtension_c.crash");
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticReport()), reports() / "Fennmoor_new.crash");
}

// By creation date.
class LastGeneratedReport : public Tests::ReportsTest {
  protected:
    static std::string lastGenerated() {
        return bytesOf(logging().getPathOfLastGeneratedCrashReport());
    }
    std::string report(const std::string& name) const { return reports() / name; }
};

TEST_F(LastGeneratedReport, IsTheOneCreatedLastWhateverItsModification) {
    put(report("Fennmoor_b.crash"));
    modify(report("Fennmoor_b.crash"), 4102444800); // in 2100
    putAfter(report("Fennmoor_b.crash"), report("Crestwarden_a.ips"));
    EXPECT_EQ(lastGenerated(), report("Crestwarden_a.ips"));
    EXPECT_EQ(bytesOf(logging().findQVDiagnosticReport()), report("Fennmoor_b.crash"));
    putAfter(report("Crestwarden_a.ips"), report("Fennmoor_a.crash"));
    EXPECT_EQ(lastGenerated(), report("Fennmoor_a.crash"));
}

TEST_F(LastGeneratedReport, IsAmongTheClientsCrashesAlone) {
    put(report("Fennmoor_a.crash"));
    putAfter(report("Fennmoor_a.crash"), report("Fennmoor_b.hang"));
    put(report("Other.crash"));
    EXPECT_EQ(lastGenerated(), report("Fennmoor_a.crash"));
}

// Two names of one file were created at the same moment.
TEST_F(LastGeneratedReport, IsTheFirstListedOfThoseOfOneDate) {
    put(report("Fennmoor_a.crash"));
    for (const char* const name : {"Fennmoor_b.crash", "Crestwarden.ips", "Fennmoor_0.crash"}) {
        fs::create_hard_link(report("Fennmoor_a.crash"), report(name));
    }
    EXPECT_EQ(lastGenerated(), report(listed(reports()).front()));
}

TEST_F(LastGeneratedReport, IsEmptyWhereOnlyRetiredReportsAreLeft) {
    fs::create_directory(retired());
    put(retired() / "Fennmoor_x.crash");
    EXPECT_EQ(lastGenerated(), "");
    EXPECT_EQ(logFiles(), std::vector<std::string>{});
}

// The path of a retired one names no file, so that its date can't be read.
TEST_F(LastGeneratedReport, IsNoRetiredOneHoweverNew) {
    put(report("Fennmoor_a.crash"));
    fs::create_directory(retired());
    putAfter(report("Fennmoor_a.crash"), retired() / "QVFinderExtension_b.crash");
    EXPECT_EQ(logging().findQVDiagnosticReports()->count(), 2U);
    EXPECT_EQ(lastGenerated(), report("Fennmoor_a.crash"));
}

TEST_F(LastGeneratedReport, IsNilWithALineInTheLogWhereThereAreNoReports) {
    put(report("Other.crash"));
    EXPECT_EQ(lastGenerated(), "(nil)");
    EXPECT_EQ(log(), "[2026-11-16 06:56:27.41]: [2026-11-16 06:56:27]: "
                     "getPathOfLastGeneratedCrashReport returns nil\n");
}

TEST_F(LastGeneratedReport, KeepsANameThatIsNotUtf8) {
    put(report("Fennmoor_\xE9.crash"));
    EXPECT_EQ(lastGenerated(), report("Fennmoor_\xE9.crash"));
}

// Dates that a real file system does not give.
class LastGeneratedInMemory : public LastGeneratedReport {
  protected:
    LastGeneratedInMemory() { (void)files.createDirectoryAtPath(*NS::str(reports().string())); }
    void add(const std::string& name, double secondsSince1970) {
        files.addFile(report(name), secondsSince1970 - NS::kTimeIntervalSince1970);
    }
    std::string found() {
        const NS::ScopedFileManager scope(files);
        return lastGenerated();
    }

    NS::MemoryFileManager files;
};

TEST_F(LastGeneratedInMemory, IsEmptyWithoutADateAfter1970Began) {
    add("Fennmoor_a.crash", 0);
    add("Fennmoor_b.crash", -1);
    EXPECT_EQ(found(), "");
    add("Fennmoor_c.crash", 0.5);
    EXPECT_EQ(found(), report("Fennmoor_c.crash"));
}

TEST_F(LastGeneratedInMemory, HasADateThatCanBeRead) {
    add("Fennmoor_a.crash", 1000);
    add("Fennmoor_b.crash", 3000);
    add("Fennmoor_c.crash", 2000);
    files.hideAttributesOf(report("Fennmoor_b.crash"));
    EXPECT_EQ(found(), report("Fennmoor_c.crash"));
}

TEST_F(LastGeneratedInMemory, IsTheFirstListedOfThoseOfOneDate) {
    add("Fennmoor_b.crash", 1000);
    add("Fennmoor_a.crash", 1000);
    EXPECT_EQ(found(), report("Fennmoor_b.crash"));
}

class LastGeneratedBeforeSetup : public Tests::LoggingTest {};

TEST_F(LastGeneratedBeforeSetup, IsNilWithoutALine) {
    const fs::path reports = folders.state() / "Logs" / "DiagnosticReports";
    fs::create_directories(reports);
    std::ofstream(reports / "Fennmoor_a.crash") << "there";
    const auto logging = NS::make<QVLogging>();
    logging->setPath(NS::str(logFolder().string() + "/"));
    EXPECT_FALSE(logging->getPathOfLastGeneratedCrashReport());
    EXPECT_EQ(logFiles(), std::vector<std::string>{});
    EXPECT_EQ(logging->findQVDiagnosticReports()->count(), 1U);
}

} // namespace
