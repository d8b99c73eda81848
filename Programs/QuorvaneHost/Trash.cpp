#include "Programs/QuorvaneHost/Trash.h"

#include "Programs/QuorvaneHost/FolderWalk.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr const char* kFolder = "/Trash";
constexpr const char* kSharedFolders = "/Shared Folders";

std::optional<std::uint64_t> inodeOf(int folder, const std::string& name) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    return status.st_ino;
}

bool liesIn(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::string inTrash(const std::string& name) {
    return std::string(kFolder) + "/" + name;
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

// A path in the Trash, as the name of the item that was moved there and what follows it.
std::pair<std::string, std::string> splitInTrash(const std::string& path) {
    const std::size_t start = std::string_view(kFolder).size() + 1;
    const std::size_t end = std::min(path.find('/', start), path.size());
    return {path.substr(start, end - start), path.substr(end)};
}

void requireInTrash(const std::string& path) {
    if (!liesIn(path, kFolder)) {
        throw Refusal("not in the Trash");
    }
}

// False when something of that name is there already.
bool renameWithoutReplacing(int fromFolder, const std::string& from, int toFolder,
                            const std::string& to) {
    if (::renameat2(fromFolder, from.c_str(), toFolder, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno == EEXIST) {
        return false;
    }
    throw Refusal(errno == ENOENT ? "there is no such item" : systemError());
}

// So many items at once are recorded with one wait for the disk, and hold a descriptor each.
constexpr std::size_t kBatch = 400;

} // namespace

// One item on its way into the Trash.
struct Trash::Move {
    DriveEntry entry;
    TrashRecords::Entry record;
    std::string refused;
};

// Which names the Trash has, and those that items on their way will have.
struct Trash::Names {
    std::set<std::string> taken;
    FreeNames free;

    std::string take(const std::string& name) {
        std::string found = free.nameFor(inTrash(name), [&](const std::string& candidate) {
            return !taken.contains(candidate);
        });
        taken.insert(found);
        return found;
    }
};

namespace {

// False when there is no Trash to look into: then a disk may not be mounted yet.
bool isFolderThere(const DriveTree& tree) {
    try {
        (void)tree.folderAt(kFolder);
        return true;
    } catch (const Refusal&) {
        return false;
    }
}

bool isStillThere(const DriveTree& tree, const std::string& name,
                  const TrashRecords::Record& record) {
    try {
        const DriveEntry entry = tree.entryAt(inTrash(name));
        return inodeOf(entry.folder.get(), entry.name) == record.inode;
    } catch (const Refusal&) {
        return false;
    }
}

} // namespace

Trash::Trash(const DriveTree& tree, const std::string& recordsFile, Step beforeStep)
    : tree_(tree), beforeStep_(std::move(beforeStep)),
      records_(recordsFile, [&, isThere = isFolderThere(tree)](const std::string& name,
                                                               const TrashRecords::Record& record) {
          return !isThere || isStillThere(tree, name, record);
      }) {}

NS::FileDescriptor Trash::openFolder() const {
    const DriveEntry entry = tree_.entryAt(kFolder);
    if (::mkdirat(entry.folder.get(), entry.name.c_str(), 0777) != 0 && errno != EEXIST) {
        throw Refusal("the Trash cannot be made: " + systemError());
    }
    try {
        return tree_.folderAt(kFolder);
    } catch (const Refusal& refusal) {
        throw Refusal(std::string("the Trash: ") + refusal.what());
    }
}

Trash::Results Trash::moveIn(const std::vector<std::string>& paths) {
    const NS::FileDescriptor trash = openFolder();
    const std::vector<std::string> present = entriesIn(trash.get());
    Names names{
        {present.begin(), present.end()},
        {               }
    };
    Results results;
    for (std::size_t start = 0; start < paths.size(); start += kBatch) {
        const auto first = paths.begin() + static_cast<std::ptrdiff_t>(start);
        const auto count = std::min(kBatch, paths.size() - start);
        moveBatch({first, first + static_cast<std::ptrdiff_t>(count)}, names, trash.get(), results);
    }
    return results;
}

void Trash::moveBatch(const std::vector<std::string>& paths, Names& names, int trash,
                      Results& results) {
    std::vector<Move> moves;
    moves.reserve(paths.size());
    for (const std::string& path : paths) {
        moves.push_back(plannedMove(path, names));
    }
    record(moves);
    std::vector<std::string> notMoved;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        Move& move = moves[i];
        if (move.refused.empty()) {
            carryOut(move, trash);
        }
        if (move.refused.empty()) {
            results.push_back({paths[i], inTrash(move.record.name), {}});
        } else {
            notMoved.push_back(move.record.name);
            results.push_back({paths[i], {}, move.refused});
        }
    }
    forget(notMoved, results);
}

Trash::Move Trash::plannedMove(const std::string& path, Names& names) const {
    Move move;
    try {
        move.entry = tree_.entryAt(path);
        const std::string& origin = move.entry.path;
        if (origin == "/" || origin == kFolder || origin == kSharedFolders) {
            throw Refusal("this folder stays where it is");
        }
        if (liesIn(origin, kFolder)) {
            throw Refusal("it is in the Trash already");
        }
        const auto inode = inodeOf(move.entry.folder.get(), move.entry.name);
        if (!inode) {
            throw Refusal("there is no such item");
        }
        move.record = {
            names.take(move.entry.name), {*inode, origin}
        };
    } catch (const Refusal& refusal) {
        move.refused = refusal.what();
    }
    return move;
}

// What cannot be recorded does not move.
void Trash::record(std::vector<Move>& moves) {
    std::vector<TrashRecords::Entry> entries;
    for (const Move& move : moves) {
        if (move.refused.empty()) {
            entries.push_back(move.record);
        }
    }
    try {
        beforeStep_();
        records_.add(entries);
    } catch (const Refusal& refusal) {
        for (Move& move : moves) {
            move.refused = move.refused.empty() ? refusal.what() : move.refused;
        }
    }
}

void Trash::carryOut(Move& move, int trash) {
    try {
        beforeStep_();
        if (!renameWithoutReplacing(move.entry.folder.get(), move.entry.name, trash,
                                    move.record.name)) {
            move.refused = "something else came to its place in the Trash";
        }
    } catch (const Refusal& refusal) {
        move.refused = refusal.what();
    }
}

Trash::Results Trash::restore(const std::vector<std::string>& paths) {
    Results results;
    FreeNames names;
    std::vector<std::string> restored;
    for (const std::string& path : paths) {
        Result result{path, {}, {}};
        try {
            result.to = restoreOne(path, names, restored);
        } catch (const Refusal& refusal) {
            result.reason = refusal.what();
        }
        results.push_back(std::move(result));
    }
    forget(restored, results);
    return results;
}

// Where it is now. Adds the names of the Trash whose records are done with.
std::string Trash::restoreOne(const std::string& path, FreeNames& names,
                              std::vector<std::string>& restored) {
    const DriveEntry entry = tree_.entryAt(path);
    requireInTrash(entry.path);
    const auto [name, below] = splitInTrash(entry.path);
    const DriveEntry top = tree_.entryAt(inTrash(name));
    const auto inode = inodeOf(top.folder.get(), top.name);
    if (!inode || !existsIn(entry.folder.get(), entry.name)) {
        throw Refusal("there is no such item");
    }
    const auto record = records_.find(name, *inode);
    if (!record) {
        throw Refusal("it is not known where it was");
    }
    std::string to = putBack(entry, record->origin + below, names);
    if (below.empty()) {
        restored.push_back(name);
    }
    return to;
}

std::string Trash::putBack(const DriveEntry& entry, const std::string& origin, FreeNames& names) {
    beforeStep_();
    const NS::FileDescriptor folder = tree_.madeFolderAt(folderOf(origin) + "/");
    std::string name;
    do {
        name = names.nameFor(origin, [&](const std::string& candidate) {
            return !existsIn(folder.get(), candidate);
        });
        beforeStep_();
    } while (!renameWithoutReplacing(entry.folder.get(), entry.name, folder.get(), name));
    return folderOf(origin) + "/" + name;
}

Trash::Results Trash::remove(const std::vector<std::string>& paths) {
    Results results;
    std::vector<std::string> removed;
    for (const std::string& path : paths) {
        Result result{path, {}, {}};
        try {
            removeOne(path, removed);
        } catch (const Refusal& refusal) {
            result.reason = refusal.what();
        }
        results.push_back(std::move(result));
    }
    forget(removed, results);
    return results;
}

void Trash::removeOne(const std::string& path, std::vector<std::string>& removed) {
    const DriveEntry entry = tree_.entryAt(path);
    requireInTrash(entry.path);
    if (!existsIn(entry.folder.get(), entry.name)) {
        throw Refusal("there is no such item");
    }
    if (!removeWhole(entry.folder.get(), entry.name, beforeStep_)) {
        throw Refusal("not all of it can be removed");
    }
    if (const auto [name, below] = splitInTrash(entry.path); below.empty()) {
        removed.push_back(name);
    }
}

Trash::Results Trash::empty() {
    const NS::FileDescriptor trash = openFolder();
    std::vector<std::string> paths = entriesIn(trash.get());
    std::ranges::sort(paths);
    std::ranges::transform(paths, paths.begin(), inTrash);
    return remove(paths);
}

// A record that cannot be dropped now is dropped at the next start, since its item is gone.
void Trash::forget(const std::vector<std::string>& names, Results& results) {
    try {
        beforeStep_();
        records_.remove(names);
    } catch (const Refusal& refusal) {
        results.push_back({kFolder, {}, refusal.what()});
    }
}
