#pragma once

#include <string>

namespace NS {

// Moves a process's reports, all but the newest by modification, from the reports folder to the
// folder "Retired" in it, under a new name where theirs is taken, and takes away the oldest there
// beyond kRetiredReports, whether something moved or not. Looks at nothing but regular files
// "<process>_<yyyy-MM-dd-HHmmss>_….crash". The result is empty, or what the system refused first:
// a folder in which no report could be written, above all. Two processes may do so at once.
std::string retireReports(const std::string& folder, const std::string& process);

inline constexpr std::size_t kRetiredReports = 25;

} // namespace NS
