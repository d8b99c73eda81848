#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Benchmarks {

// Absolute paths of items that are selected in a folder of a drive.
std::vector<std::string> selectedPaths(std::string_view drive, std::size_t count);
// The same as a search finds them: each in another folder than the one before, or in none.
std::vector<std::string> foundPaths(std::string_view drive, std::size_t count);

} // namespace Benchmarks
