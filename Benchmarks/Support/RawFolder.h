#pragma once

#include <cstddef>
#include <filesystem>

namespace Benchmarks {

// A folder of empty files, by bare system calls. Throws what the system refuses.

// Makes numbered files, called like logs.
void fillRaw(const std::filesystem::path& folder, std::size_t files);

// What pruning costs at the least: the names are read, each entry is asked for its creation date,
// all but the newest are unlinked in the order in which they were read. The calls go by the
// folder's descriptor, nothing is made for an entry but its name and its date, and nothing is
// sorted: it is enough to know which are the newest.
void pruneRaw(const std::filesystem::path& folder, std::size_t kept);

} // namespace Benchmarks
