#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <sys/stat.h>

// Visits all that is below a folder, however deep: without recursion, with a few open files, and
// past the length that a path may have in a system call. Symbolic links are entries, not ways.
class FolderWalk {
  public:
    // An entry, by the open folder that holds it.
    using Visit =
        std::function<void(int folder, const std::string& name, const struct stat& status)>;

    // The first is called for each entry, of a folder before those in it; the second for each
    // folder below once more after those in it, also where it could not be read.
    FolderWalk(Visit visit, Visit leave) : visit_(std::move(visit)), leave_(std::move(leave)) {}

    // An entry that goes, or cannot be looked at, is passed over. False when a folder on the way
    // was moved elsewhere meanwhile, so that there is no way back: then the rest was not visited.
    bool below(int folder) const;

  private:
    Visit visit_;
    Visit leave_;
};

// What is below a folder, an entry of an open one. What cannot be read counts nothing.
struct FolderContents {
    std::uint64_t bytes = 0; // in regular files
    std::uint64_t files = 0; // all that is no folder
    std::uint64_t folders = 0;

    static FolderContents below(int folder, const std::string& name);
};

// Removes an entry of an open folder, and what it holds. False when something is left. The function
// is called before each step.
bool removeWhole(int folder, const std::string& name, const std::function<void()>& beforeStep);
