#pragma once

#include <string_view>

// How reports are told apart: by their files' names, upper and lower case being different.

// The client's processes, whose names their reports begin with: the host application, its
// background tool, and the extension.
inline constexpr std::string_view kClientProcesses[] = {
    "Fennmoor",
    "Crestwarden",
    "QVFinderExtension",
};
