#include "CustomConsoleLogging/Testing/ReportsFixture.h"

namespace {

using DiagnosticFolders = Tests::ReportsTest;

TEST_F(DiagnosticFolders, AreTheMachinesAndTheUsers) {
    EXPECT_EQ(bytesOf(logging().findAllDiagnosticReports()), "/Library/Logs/DiagnosticReports");
    EXPECT_EQ(bytesOf(logging().findAllDiagnosticRetiredReports()),
              "/Library/Logs/DiagnosticReports/Retired");
    EXPECT_EQ(bytesOf(logging().findAllHomeDiagnosticReports()), reports());
    EXPECT_EQ(bytesOf(logging().findAllHomeDiagnosticRetiredReports()), retired());
}

TEST_F(DiagnosticFolders, AreBuiltAtEachCallWhetherTheyAreThereOrNot) {
    const Tests::ScopedVariable state("XDG_STATE_HOME", "/no/such//folder/");
    EXPECT_EQ(bytesOf(logging().findAllHomeDiagnosticReports()),
              "/no/such/folder/Logs/DiagnosticReports");
    EXPECT_EQ(bytesOf(logging().findAllHomeDiagnosticRetiredReports()),
              "/no/such/folder/Logs/DiagnosticReports/Retired");
}

TEST_F(DiagnosticFolders, StandBelowTheHomeFolderByDefault) {
    const Tests::ScopedVariable state("XDG_STATE_HOME", std::nullopt);
    EXPECT_EQ(bytesOf(logging().findAllHomeDiagnosticReports()),
              folders.home() / ".local/state/Logs/DiagnosticReports");
}

TEST_F(DiagnosticFolders, KeepANameThatIsNotUtf8) {
    const Tests::ScopedVariable state("XDG_STATE_HOME", "/home/ren\xE9");
    EXPECT_EQ(bytesOf(logging().findAllHomeDiagnosticReports()),
              "/home/ren\xE9/Logs/DiagnosticReports");
}

TEST_F(DiagnosticFolders, HaveTheInstallersLogBesideTheLogs) {
    EXPECT_EQ(bytesOf(logging().findInstallLogFile()),
              folders.data() / "Quorvane/qvinst/install-log.txt");
}

TEST_F(DiagnosticFolders, HaveTheInstallersLogWhereTheSharedInstanceLogs) {
    logging().setPath(NS::str("/elsewhere/LogDirectory//"));
    EXPECT_EQ(bytesOf(logging().findInstallLogFile()), "/elsewhere/qvinst/install-log.txt");
    logging().setPath(nullptr);
    EXPECT_EQ(bytesOf(logging().findInstallLogFile()), "(nil)");
}

TEST_F(DiagnosticFolders, HaveTheRenameLogAtAFixedPath) {
    EXPECT_EQ(bytesOf(logging().findLastRenameLog()), "/tmp/rn_items");
}

using DiagnosticFoldersBeforeSetup = Tests::LoggingTest;

TEST_F(DiagnosticFoldersBeforeSetup, HaveNoInstallersLog) {
    const auto logging = NS::make<QVLogging>();
    logging->setPath(NS::str("/not/the/shared/one/"));
    EXPECT_FALSE(logging->findInstallLogFile());
    EXPECT_EQ(logging->findAllDiagnosticReports()->utf8(), "/Library/Logs/DiagnosticReports");
}

} // namespace
