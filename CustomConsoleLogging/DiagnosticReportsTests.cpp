#include "CustomConsoleLogging/Testing/ReportsFixture.h"
#include "Platform/Foundation/Testing/MemoryFileManager.h"

#include <gmock/gmock.h>

namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using Paths = std::vector<std::string>;

class DiagnosticReports : public Tests::ReportsTest {
  protected:
    static Paths main() { return bytesOf(*logging().mainDiagnosticReports()); }
    static Paths own() { return bytesOf(*logging().findQVDiagnosticReports()); }
    static Paths logs() { return bytesOf(*logging().ongoingLogs()); }
    std::string report(const std::string& name) const { return reports() / name; }
    std::string retiredReport(const std::string& name) const { return retired() / name; }
    fs::path contained() const {
        return folders.home() / "Library/Containers/com.Quorvane.Quorvane.QVFinderExtension/Data/"
                                "Library/Application Support/Quorvane/LogDirectory";
    }
};

TEST_F(DiagnosticReports, TellOtherProgramsFromTheClients) {
    put(report("Fennmoor_2026-11-16-065627_host.crash"));
    put(report("Other_2026-11-16-065627_host.crash"));
    put(report("QVFinderExtension_x.hang"));
    EXPECT_THAT(main(), ElementsAre(report("Other_2026-11-16-065627_host.crash")));
    EXPECT_THAT(own(), ElementsAre(report("Fennmoor_2026-11-16-065627_host.crash")));
}

TEST_F(DiagnosticReports, TakeEachKindOfOtherPrograms) {
    for (const char* const kind : {".spin", ".hang", ".ips", ".crash", ".diag", ".txt", ""}) {
        put(report(std::string("Other") + kind));
    }
    EXPECT_THAT(main(), UnorderedElementsAre(report("Other.spin"), report("Other.hang"),
                                             report("Other.ips"), report("Other.crash")));
}

TEST_F(DiagnosticReports, TakeCrashesOnlyOfEachProcessOfTheClient) {
    Paths crashes;
    for (const std::string process : {"Fennmoor", "Crestwarden", "QVFinderExtension"}) {
        for (const std::string kind : {".spin", ".hang", ".txt"}) {
            put(report(process + "_x" + kind));
        }
        for (const std::string kind : {".ips", ".crash"}) {
            put(report(process + "_x" + kind));
            crashes.push_back(report(process + "_x" + kind));
        }
    }
    EXPECT_THAT(own(), testing::UnorderedElementsAreArray(crashes));
    EXPECT_THAT(main(), IsEmpty());
}

TEST_F(DiagnosticReports, LookAtBeginningAndEndOfANameAlone) {
    put(report("Fennmoor.crash.txt"));
    put(report("My Fennmoor.crash"));
    put(report("Fennmoor.crash"));
    put(report(".crash"));
    EXPECT_THAT(own(), ElementsAre(report("Fennmoor.crash")));
    EXPECT_THAT(main(), UnorderedElementsAre(report("My Fennmoor.crash"), report(".crash")));
}

TEST_F(DiagnosticReports, TellUpperFromLowerCase) {
    put(report("fennmoor_x.crash"));
    put(report("Fennmoor_x.CRASH"));
    EXPECT_THAT(own(), IsEmpty());
    EXPECT_THAT(main(), ElementsAre(report("fennmoor_x.crash")));
}

TEST_F(DiagnosticReports, GiveOtherProgramsRetiredReportsWhereTheyAre) {
    fs::create_directory(retired());
    put(retiredReport("Other.crash"));
    put(report("Other.ips"));
    EXPECT_THAT(main(), ElementsAre(report("Other.ips"), retiredReport("Other.crash")));
}

// Such a path mostly names nothing; a caller that wants the file looks into the folder itself.
TEST_F(DiagnosticReports, GivesARetiredReportAPathInTheReportsFolder) {
    fs::create_directory(retired());
    put(retiredReport("Fennmoor_x.ips"));
    put(report("Crestwarden_x.crash"));
    EXPECT_THAT(own(), ElementsAre(report("Crestwarden_x.crash"), report("Fennmoor_x.ips")));
    EXPECT_FALSE(fs::exists(report("Fennmoor_x.ips")));
}

TEST_F(DiagnosticReports, GiveAReportTwiceThatIsInBothFolders) {
    fs::create_directory(retired());
    put(retiredReport("Fennmoor_x.ips"));
    put(report("Fennmoor_x.ips"));
    EXPECT_THAT(own(), ElementsAre(report("Fennmoor_x.ips"), report("Fennmoor_x.ips")));
}

TEST_F(DiagnosticReports, KeepTheOrderOfTheFileSystem) {
    for (int i = 0; i < 40; ++i) {
        put(report("Fennmoor_" + std::to_string(i * 7919) + ".ips"));
    }
    Paths expected;
    for (const std::string& name : listed(reports())) {
        expected.push_back(report(name));
    }
    EXPECT_EQ(own(), expected);
}

TEST_F(DiagnosticReports, TakeEntriesOfEveryType) {
    fs::create_directory(report("Fennmoor.crash"));
    fs::create_symlink("nowhere", report("Fennmoor_link.ips"));
    EXPECT_THAT(own(), UnorderedElementsAre(report("Fennmoor.crash"), report("Fennmoor_link.ips")));
}

TEST_F(DiagnosticReports, KeepANameThatIsNotUtf8) {
    put(report("Fennmoor_\xE9.crash"));
    put(report("\xE9.crash"));
    EXPECT_THAT(own(), ElementsAre(report("Fennmoor_\xE9.crash")));
    EXPECT_THAT(main(), ElementsAre(report("\xE9.crash")));
}

TEST_F(DiagnosticReports, AreNoneWhereThereAreNoFolders) {
    fs::remove(reports());
    EXPECT_THAT(main(), IsEmpty());
    EXPECT_THAT(own(), IsEmpty());
    put(reports(), "a file");
    EXPECT_THAT(main(), IsEmpty());
    EXPECT_THAT(own(), IsEmpty());
}

// The machine's folders, in memory: nobody's /Library is touched.
class MachinesReports : public DiagnosticReports {
  protected:
    MachinesReports() {
        const NS::ScopedFileManager scope(files);
        for (const fs::path& folder : {retired(), fs::path(kMachine + "/Retired")}) {
            (void)files.createDirectoryAtPath(*NS::str(folder.string()));
        }
        files.takeAccesses();
    }
    Paths foundByMain() {
        const NS::ScopedFileManager scope(files);
        return main();
    }

    const std::string kMachine = "/Library/Logs/DiagnosticReports";
    NS::MemoryFileManager files;
};

TEST_F(MachinesReports, AreTakenOfAllPrograms) {
    files.addFile(kMachine + "/Fennmoor_x.crash");
    files.addFile(kMachine + "/notes.txt");
    files.addFile(kMachine + "/Other.spin");
    files.addFile(kMachine + "/Retired/QVFinderExtension_x.hang");
    files.addFile(kMachine + "/Retired/Other.diag");
    EXPECT_THAT(foundByMain(), ElementsAre(kMachine + "/Fennmoor_x.crash", kMachine + "/Other.spin",
                                           kMachine + "/Retired/QVFinderExtension_x.hang"));
}

TEST_F(MachinesReports, ComeAfterTheUsers) {
    files.addFile(kMachine + "/Retired/d.ips");
    files.addFile(kMachine + "/c.ips");
    files.addFile(retiredReport("b.ips"));
    files.addFile(report("a.ips"));
    EXPECT_THAT(foundByMain(), ElementsAre(report("a.ips"), retiredReport("b.ips"),
                                           kMachine + "/c.ips", kMachine + "/Retired/d.ips"));
}

TEST_F(MachinesReports, AreNotLookedIntoForTheClientsOwn) {
    files.addFile(kMachine + "/Fennmoor_x.crash");
    const NS::ScopedFileManager scope(files);
    EXPECT_THAT(own(), IsEmpty());
    EXPECT_THAT(files.takeAccesses(),
                ElementsAre("list " + reports().string(), "list " + retired().string()));
}

// ongoingLogs()
class OngoingLogs : public DiagnosticReports {};

TEST_F(OngoingLogs, AreAllEntriesOfTheLoggingFolder) {
    _Log("DEBUG ", nullptr, 0, nullptr, "one");
    put(logFolder() / "PLPCR.s");
    put(logFolder() / ".hidden");
    fs::create_directories(logFolder() / "folder" / "deep");
    EXPECT_THAT(logs(), UnorderedElementsAre(logFolder() / "FELog-2026-11-16 06:56:27.41.txt",
                                             logFolder() / "PLPCR.s", logFolder() / ".hidden",
                                             logFolder() / "folder"));
}

TEST_F(OngoingLogs, AreFollowedByThoseOfTheContainer) {
    fs::create_directories(contained());
    fs::create_directories(logFolder());
    put(contained() / "FELog-a.txt");
    put(logFolder() / "FELog-b.txt");
    EXPECT_THAT(logs(), ElementsAre(logFolder() / "FELog-b.txt", contained() / "FELog-a.txt"));
}

TEST_F(OngoingLogs, KeepTheOrderOfTheFileSystem) {
    fs::create_directories(logFolder());
    for (int i = 0; i < 40; ++i) {
        put(logFolder() / std::to_string(i * 7919));
    }
    Paths expected;
    for (const std::string& name : listed(logFolder())) {
        expected.push_back(logFolder() / name);
    }
    EXPECT_EQ(logs(), expected);
}

TEST_F(OngoingLogs, KeepANameThatIsNotUtf8) {
    fs::create_directories(logFolder());
    put(logFolder() / "FELog-\xE9.txt");
    EXPECT_THAT(logs(), ElementsAre((logFolder() / "FELog-\xE9.txt").string()));
}

TEST_F(OngoingLogs, AreNoneWhereThereAreNoFolders) {
    EXPECT_THAT(logs(), IsEmpty());
    logging().setPath(nullptr);
    EXPECT_THAT(logs(), IsEmpty());
}

TEST_F(OngoingLogs, AreThoseOfTheSharedInstance) {
    fs::create_directories(folders.root() / "other");
    put(folders.root() / "other" / "log");
    const auto another = NS::make<QVLogging>();
    another->setPath(NS::str("/nowhere/"));
    logging().setPath(NS::str((folders.root() / "other/").string()));
    EXPECT_THAT(bytesOf(*another->ongoingLogs()), ElementsAre(folders.root() / "other" / "log"));
}

using OngoingLogsBeforeSetup = Tests::LoggingTest;

TEST_F(OngoingLogsBeforeSetup, AreThoseOfTheContainerAlone) {
    NS::MemoryFileManager files;
    const NS::ScopedFileManager scope(files);
    EXPECT_EQ(NS::make<QVLogging>()->ongoingLogs()->count(), 0U);
    EXPECT_THAT(files.takeAccesses(), ElementsAre(testing::HasSubstr("/Library/Containers/")));
}

} // namespace
