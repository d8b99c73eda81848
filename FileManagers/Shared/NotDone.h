#pragma once

#include "Shell/Client/FinderClient.h"

#include <string>

namespace FileManagers {

// What a user is told when something that was picked, or clicked, did not come about.
struct NotDone {
    std::string what;
    std::string why;
};

// For the title of a menu's entry, or of what should have opened; drive is its name for the user,
// error what the client says of a failure.
NotDone notDone(const std::string& title, Shell::Outcome outcome, const std::string& drive,
                const std::string& error);

} // namespace FileManagers
