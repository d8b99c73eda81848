#pragma once

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <filesystem>
#include <string>

namespace Tests {

// Starts extension processes in private folders and finds what they leave there.
class ProcessTest : public FolderTest {
  protected:
    ProcessTest() { std::filesystem::create_directories(drive); }

    Process startExtension(const std::string& name = "extension") {
        return {EXTENSION_PROGRAM,
                {},
                folders.root() / (name + ".out"),
                folders.root() / (name + ".err")};
    }
    std::filesystem::path socketFolder() const { return folders.runtime() / "Quorvane"; }
    std::filesystem::path logFolder() const { return folders.data() / "Quorvane" / "LogDirectory"; }
    std::filesystem::path reportsFolder() const {
        return folders.state() / "Logs" / "DiagnosticReports";
    }
    // All log files one after the other.
    std::string logs() const {
        std::string text;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(logFolder(), error)) {
            text += contentsOf(entry.path());
        }
        return text;
    }
    bool logShows(const std::string& text) const {
        return waitUntil([&] { return logs().find(text) != std::string::npos; });
    }
    bool logShowsNow(const std::string& text, std::size_t times) const {
        const std::string all = logs();
        std::size_t found = 0;
        for (std::size_t at = all.find(text); at != std::string::npos;
             at = all.find(text, at + 1)) {
            ++found;
        }
        return found >= times;
    }
    // Names and sockets that are registered, without what belongs to the folder itself.
    std::size_t registeredEntries() const {
        std::size_t count = 0;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(socketFolder(), error)) {
            count += entry.path().filename().string().starts_with('.') ? 0U : 1U;
        }
        return count;
    }

    std::filesystem::path drive = folders.root() / "drive";
};

} // namespace Tests
