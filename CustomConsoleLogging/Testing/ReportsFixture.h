#pragma once

#include "CustomConsoleLogging/Testing/LoggingFixture.h"
#include "Platform/Foundation/Array.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Tests {

// A process with its logging set up, and a user's folder of reports that is there and empty.
class ReportsTest : public LoggingTest {
  protected:
    ReportsTest();

    std::filesystem::path reports() const { return folders.state() / "Logs" / "DiagnosticReports"; }
    std::filesystem::path retired() const { return reports() / "Retired"; }

    static void put(const std::filesystem::path& file, std::string_view contents = "");
    // Gives a file a modification date, in seconds since 1970.
    static void modify(const std::filesystem::path& file, long seconds);
    // Makes a file whose creation date is after that of another.
    void putAfter(const std::filesystem::path& earlier, const std::filesystem::path& file) const;

    // Paths as the file system has them, in their order; "(nil)" for a path that is none.
    static std::vector<std::string> bytesOf(const NS::Array& paths);
    static std::string bytesOf(const NS::RefPtr<NS::String>& path);
    // The names in a folder in the file system's order.
    static std::vector<std::string> listed(const std::filesystem::path& folder);

    static QVLogging& logging() { return *QVLogging::sharedInstance(); }
};

} // namespace Tests
