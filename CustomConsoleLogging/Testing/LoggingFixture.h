#pragma once

#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Testing/ManualClock.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScopedVariable.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Tests {

// A process that has not logged yet, at 2026-11-16 06:56:27.41 UTC, with folders of its own.
class LoggingTest : public FolderTest {
  protected:
    static constexpr double kNow = 816504987.41;

    std::filesystem::path logFolder() const { return folders.data() / "Quorvane" / "LogDirectory"; }
    // The names in the logging folder, in order; none where there is no folder.
    std::vector<std::string> logFiles() const;
    std::string textOf(const std::string& logFile) const {
        return contentsOf(logFolder() / logFile);
    }
    // The text of the only log file.
    std::string log() const;

    NS::ManualClock clock{kNow};
    ScopedVariable zone{"TZ", "UTC"};

  private:
    NS::ScopedClock scopedClock_{clock};
    ScopedLoggingState scopedState_;
};

} // namespace Tests
