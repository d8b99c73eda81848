#pragma once

#include "Tests/EndToEnd/ExtensionProcess.h"
#include "Tests/Support/SessionBus.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tests {

// How a command at the terminal went.
struct Finished {
    int status;
    std::string output;
    std::string errors;
};

// A drive of real files with its host, an extension, a session bus, and a person at a terminal.
class DriveSession : public ProcessTest {
  protected:
    DriveSession() { std::filesystem::create_directories(drive / "Docs"); }

    // Starts host and extension, and waits until the extension can be asked.
    void start();
    void startHost();
    void startExtensionAlone();

    // Runs quorvane-finder in a folder, the drive's unless told otherwise.
    Finished finder(const std::vector<std::string>& arguments, std::string_view input = {});
    // The same for what has to go well: its output.
    std::string answer(const std::vector<std::string>& arguments, std::string_view input = {});
    // The titles of a menu, those that cannot be picked in brackets.
    std::vector<std::string> titles(std::vector<std::string> arguments,
                                    std::string_view input = {});

    // Makes a file on the drive, its folders too, and gives its path.
    std::string makeFile(const std::string& path, std::string_view contents = "x") const;
    bool isOnDrive(const std::string& path) const;
    bool isOnDriveSoon(const std::string& path, std::chrono::milliseconds limit = kPatience) const;
    bool isGoneSoon(const std::string& path) const;

    // The journal's lines.
    std::vector<nlohmann::json> journal() const;
    // What the host received, in order, without what it is told at the start of an extension.
    std::vector<nlohmann::json> requests() const;
    // The requests of an action, once there are as many; all there are when that takes too long.
    std::vector<nlohmann::json> requestsSoon(std::string_view action, std::size_t count = 1) const;

    SessionBus bus{folders};
    std::optional<Process> host;
    std::optional<Process> extension;

  private:
    int runs_ = 0;
};

} // namespace Tests
