#pragma once

#include "Programs/QuorvaneHost/DriveTree.h"
#include "Programs/QuorvaneHost/FreeNames.h"
#include "Programs/QuorvaneHost/TrashRecords.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// The drive's top-level folder "Trash", and the way into it and back.
//
// At any instant an item is where it was, or in the Trash with a record of where it was: the record
// is durable before the item moves, and goes after it has come back. Nothing is ever overwritten,
// and no symbolic link is followed.
class Trash {
  public:
    // What became of one item, or why nothing did.
    struct Result {
        std::string path;   // as it was asked for
        std::string to;     // where it is now, relative to the drive; empty when it is gone
        std::string reason; // empty when it was done
    };
    using Results = std::vector<Result>;
    // Called before each step that changes the drive or the records; a test ends the process in it.
    using Step = std::function<void()>;

    // The records' file lies outside of the drive, in a folder that exists. Records of items that
    // are no longer in the Trash are dropped, unless the whole Trash is missing. The tree outlives
    // it. Throws Refusal when the file
    // cannot be used.
    Trash(
        const DriveTree& tree, const std::string& recordsFile, Step beforeStep = [] {});

    // Each path is relative to the drive; the results are in their order. Items that collide in the
    // Trash, or with what has since taken their place, get a number.
    Results moveIn(const std::vector<std::string>& paths);
    Results restore(const std::vector<std::string>& paths);
    // Removes items for good, with all that is in them.
    Results remove(const std::vector<std::string>& paths);
    // The same for all that is in the Trash; the folder stays.
    Results empty();

  private:
    struct Move;
    struct Names;

    NS::FileDescriptor openFolder() const;
    void moveBatch(const std::vector<std::string>& paths, Names& names, int trash,
                   Results& results);
    Move plannedMove(const std::string& path, Names& names) const;
    void record(std::vector<Move>& moves);
    void carryOut(Move& move, int trash);
    std::string restoreOne(const std::string& path, FreeNames& names,
                           std::vector<std::string>& restored);
    std::string putBack(const DriveEntry& entry, const std::string& origin, FreeNames& names);
    void removeOne(const std::string& path, std::vector<std::string>& removed);
    void forget(const std::vector<std::string>& names, Results& results);

    const DriveTree& tree_;
    Step beforeStep_;
    TrashRecords records_;
};
