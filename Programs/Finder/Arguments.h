#pragma once

#include "Shell/Client/FinderClient.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// What the person at the terminal did wrong, as one line.
class UserError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// What a menu is asked for, as it was given.
struct MenuArguments {
    std::optional<Shell::MenuKind> kind;
    std::string target;
    std::vector<std::string> paths; // "-" stands for those on standard input
    // For a command that does something: an input without paths is a mistake, and not the
    // container.
    bool needsPathsFromInput = false;
};

struct MenuRequest {
    Shell::MenuKind kind = Shell::MenuKind::kContainer;
    Shell::Place place;
};

// Fills in what was left out: the kind is that of items where there are paths, else the
// container's; the target is the folder of the first path, else the current folder. Paths become
// absolute; symbolic links stay. Without any path, those that a pipe or a file on standard input
// brings are taken. Throws UserError for a path that does not exist.
MenuRequest menuRequestFrom(const MenuArguments& arguments);

// An absolute path for one that may be relative to the current folder. Throws UserError when there
// is nothing there.
std::string existingPath(const std::string& path);
// The same for what may be gone already.
std::string absolutePath(const std::string& path);
