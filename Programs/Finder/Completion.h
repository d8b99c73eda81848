#pragma once

#include <string>
#include <vector>

// The shells for which completionFor() has a script.
std::vector<std::string> completionShells();

// A script for the shell that completes the commands, options and paths of this program and, after
// "pick", the titles of the menu as it is now. The shell's name is one of completionShells().
std::string completionFor(const std::string& shell);
