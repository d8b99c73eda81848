#pragma once

#include "FileManagers/Shared/Drive.h"
#include "Shell/Client/Testing/FakeExtension.h"
#include "Tests/Support/SessionBus.h"

#include <optional>
#include <poll.h>
#include <string>
#include <vector>

namespace Tests {

// A plug-in's drive on a bus of the test's own, and what it may find there.
class DriveTest : public SessionBusTest {
  protected:
    using Titles = std::vector<std::string>;

    // An extension that watches "/mnt/Drive", and a drive that knows of it.
    void start() {
        extension.emplace(std::vector<std::string>{"file:///mnt/Drive"});
        extension->appear();
        connect("/mnt/Drive");
    }
    // A drive, when there is none yet, that knows of the extension that watches a folder.
    void connect(const std::string& watched) {
        if (!drive) {
            drive.emplace(times);
            drive->setOnNotDone([this](const FileManagers::NotDone& notDone) {
                told.push_back(notDone.what + ": " + notDone.why);
            });
        }
        ASSERT_TRUE(pump([&] { return drive->isOnDrive(watched); }));
        drive->setOnChange([this] { ++changes; });
        drive->serve();
        changes = 0;
    }
    // Serves the drive as a file manager's loop does, until a condition holds.
    bool pump(const std::function<bool()>& condition) {
        return waitUntil([&] {
            pollfd ready{drive->descriptor(), POLLIN, 0};
            if (::poll(&ready, 1, 0) > 0) {
                drive->serve();
            }
            return condition();
        });
    }
    static Titles titlesOf(const std::vector<Shell::MenuEntry>& entries) {
        Titles titles;
        for (const Shell::MenuEntry& entry : entries) {
            titles.push_back(entry.enabled ? entry.title : "[" + entry.title + "]");
        }
        return titles;
    }
    Titles titles(Shell::MenuKind kind, const Shell::Place& place) {
        return titlesOf(drive->entries(kind, place));
    }
    Titles clicked(Shell::MenuKind kind, const Shell::Place& place) {
        return titlesOf(drive->clickedEntries(kind, place));
    }
    // What the extension was asked.
    Titles asked() { return extension->calls(); }

    const Shell::Place item{{"/mnt/Drive/a"}, "/mnt/Drive"};
    const Shell::Place folder{{}, "/mnt/Drive"};
    // What is answered is answered, however loaded the machine is, and what is late stays late.
    FileManagers::Drive::Times times{kPatience, std::chrono::hours(1)};
    std::optional<FakeExtension> extension;
    std::optional<FileManagers::Drive> drive;
    int changes = 0;
    Titles told; // what the user was told
};

} // namespace Tests
