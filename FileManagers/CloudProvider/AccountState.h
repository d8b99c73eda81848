#pragma once

#include "FileManagers/Shared/Drive.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace FileManagers {

// What a sidebar shows of the drive.
struct AccountState {
    enum class Status : std::uint8_t {
        kIdle,
        kWaiting, // for the host to tell of the drive
        kFailing, // something does not answer
    };

    // Of a drive that has told nothing yet.
    static constexpr const char* kIcon = "MainOnline-symbolic";

    std::string name;
    std::string folder; // that a click opens; empty while the drive has none
    std::string icon;   // a name in an icon theme, or an absolute path
    Status status = Status::kIdle;
    std::string details; // of the status, for a tool tip
    std::vector<Shell::MenuEntry> entries;

    bool operator==(const AccountState&) const = default;
};

// How it is known that a menu is not old: as it is asked for once in a generation, or anew, which
// has the host send its record, and so tells whether it does.
enum class Look : bool { kKept, kAfresh };

// The drive as it is now; nothing while no extension is there, as no entry could do anything. While
// its host has not answered, an entry that cannot be picked says so.
std::optional<AccountState> accountState(Drive& drive, Look look);

} // namespace FileManagers
