#pragma once

#include <optional>
#include <string>
#include <vector>

// Paths that a descriptor brings, each ended by a NUL; the last may go without. Reads to the end.
// Throws UserError when it cannot be read, or brings more than kLongestPathInput bytes.
std::vector<std::string> pathsFrom(int descriptor);

// The same where the descriptor is a file, or a pipe that begins to bring something within a
// second; empty when such a one brings nothing. Nothing for a terminal or another device: it is not
// read.
std::optional<std::vector<std::string>> pathsFromPipe(int descriptor);
