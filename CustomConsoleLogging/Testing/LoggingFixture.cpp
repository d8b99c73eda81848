#include "CustomConsoleLogging/Testing/LoggingFixture.h"

#include <algorithm>

namespace Tests {

std::vector<std::string> LoggingTest::logFiles() const {
    std::vector<std::string> names;
    std::error_code ignored; // no folder, no names
    for (const auto& entry : std::filesystem::directory_iterator(logFolder(), ignored)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

std::string LoggingTest::log() const {
    const std::vector<std::string> files = logFiles();
    return files.size() == 1 ? textOf(files.front()) : std::to_string(files.size()) + " log files";
}

} // namespace Tests
