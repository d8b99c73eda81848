#include "Shell/Client/WatchedFolders.h"

#include "Shell/Client/LinkFreePath.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace Shell {

namespace {

using Where = Placing::Where;

std::string_view withoutSlashesAtEnd(std::string_view path) {
    const std::size_t end = path.find_last_not_of('/');
    return path.substr(0, end == std::string_view::npos ? 1 : end + 1);
}

// With a slash at its end a link is the folder that it leads to, as "." and ".." are folders.
bool isFolderItself(std::string_view name) {
    return name.empty() || name == "." || name == "..";
}

constexpr std::uint64_t kEachByte = 0x0101'0101'0101'0101;

// Whether one of eight bytes is zero: only to take one from it borrows from its neighbour.
constexpr bool hasZero(std::uint64_t bytes) {
    return ((bytes - kEachByte) & ~bytes & (kEachByte << 7U)) != 0;
}

bool eightAreOfOneComponent(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return !hasZero(word) && !hasZero(word ^ (kEachByte * '/'));
}

// Whether there is neither a slash nor a NUL in a name. Of many selected items this looks at every
// byte of each: eight at a time take a fraction of two searches.
bool isOneComponent(std::string_view name) {
    constexpr std::size_t kStep = sizeof(std::uint64_t);
    if (name.size() < kStep) {
        return name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
    }
    const std::size_t last = name.size() - kStep;
    for (std::size_t at = 0; at < last; at += kStep) {
        if (!eightAreOfOneComponent(name.data() + at)) {
            return false;
        }
    }
    return eightAreOfOneComponent(name.data() + last);
}

// Whether an item that a file manager gives is in a folder that it gives, and has a name of its own
// there.
bool isItemOf(std::string_view folder, std::string_view path) {
    if (path.size() <= folder.size() || path[folder.size()] != '/' || !path.starts_with(folder)) {
        return false;
    }
    const std::string_view name = path.substr(folder.size() + 1);
    return !isFolderItself(name) && isOneComponent(name);
}

// Whether one path is the other with a slash at its end.
bool isSlashBehind(std::string_view path, std::string_view withSlash) {
    return withSlash.size() == path.size() + 1 && withSlash.starts_with(path);
}

// Whether each component of an absolute path is a name.
bool hasNamesOnly(std::string_view path) {
    if (!path.starts_with('/')) {
        return false;
    }
    while (!path.empty()) {
        path.remove_prefix(1); // the slash
        const std::size_t length = std::min(path.find('/'), path.size());
        if (isFolderItself(path.substr(0, length))) {
            return false;
        }
        path.remove_prefix(length);
    }
    return true;
}

// Without symbolic links, "." and ".."; as far as the path exists and may be seen.
std::string canonical(std::string_view path) {
    const std::filesystem::path given(path);
    std::error_code error;
    std::filesystem::path real = std::filesystem::canonical(given, error);
    if (error) {
        real = std::filesystem::weakly_canonical(given, error);
    }
    if (error) {
        real = given.lexically_normal();
    }
    return std::string(withoutSlashesAtEnd(real.native()));
}

// What the system would read on from is shorter than what a file manager gave when it holds a NUL.
bool isAbsolute(std::string_view path) {
    return path.starts_with('/') && path.find('\0') == std::string_view::npos;
}

std::string joined(std::string_view folder, std::string_view name) {
    std::string path;
    path.reserve(folder.size() + 1 + name.size());
    return path.append(folder == "/" ? "" : folder).append("/").append(name);
}

bool isBelow(std::string_view path, std::string_view folder) {
    return folder == "/" ? path.size() > 1
                         : path.size() > folder.size() && path.starts_with(folder) &&
                               path[folder.size()] == '/';
}

// The same place below another folder.
std::string moved(std::string_view path, std::string_view from, std::string_view to) {
    const std::string_view rest = from == "/" ? path : path.substr(from.size());
    return std::string(to == "/" ? "" : to) + std::string(rest);
}

} // namespace

WatchedFolders::WatchedFolders(const std::vector<std::string>& folders) {
    watched_.reserve(folders.size());
    for (const std::string& folder : folders) {
        watched_.push_back({&folder, {}});
    }
}

const std::vector<WatchedFolders::Watched>& WatchedFolders::watched() {
    if (!isWatchedResolved_) {
        isWatchedResolved_ = true;
        for (Watched& watched : watched_) {
            if (!isPlain(*watched.spelling)) {
                watched.target = canonical(*watched.spelling);
            }
        }
    }
    return watched_;
}

// Whether an absolute path is the same without links, "." and "..". Nearly no path holds a link,
// which one look tells of the path and of the folders on it; to find where a link leads takes one
// for each component.
bool WatchedFolders::isPlain(std::string_view path) {
    if (!hasNamesOnly(path)) {
        return false;
    }
    if (path == linkFree_ || isBelow(linkFree_, path)) {
        return true;
    }
    std::string same(path);
    if (!isFreeOfLinks(same)) {
        return false;
    }
    linkFree_ = std::move(same);
    return true;
}

// Whether a path is the only watched folder, mostly a drive, or goes on from it without links, ".",
// and "..": then it is where it seems to be, whatever is on the way to the drive.
bool WatchedFolders::isPlainInDrive(std::string_view path) {
    if (watched_.size() != 1 || *watched_.front().spelling == "/") {
        return false;
    }
    const std::string_view drive = *watched_.front().spelling;
    if (!isBelow(path, drive)) {
        return path == drive;
    }
    if (path == plainInDrive_) {
        return true;
    }
    const std::string_view rest = path.substr(drive.size());
    if (!hasNamesOnly(rest)) {
        return false;
    }
    std::string same(path);
    if (rest.rfind('/') == 0 ? !isNoLink(same) : !isFreeOfLinks(same)) {
        return false;
    }
    plainInDrive_ = std::move(same);
    return true;
}

std::string WatchedFolders::resolved(std::string_view path) {
    return isPlain(path) ? std::string(path) : canonical(path);
}

WatchedFolders::Standing WatchedFolders::standingOf(std::string_view path) {
    Standing standing;
    for (const Watched& watched : watched()) {
        const std::string& spelling = *watched.spelling;
        const std::string& resolved = watched.resolved();
        if (path == resolved || path == spelling) {
            return {Where::kWatched, path == spelling ? nullptr : &watched};
        }
        if (isBelow(path, resolved)) {
            standing = {Where::kInside, &resolved == &spelling ? nullptr : &watched};
        } else if (isBelow(path, spelling)) {
            standing.where = Where::kInside;
        } else if (standing.where == Where::kOutside && path.starts_with(spelling)) {
            standing.where = Where::kBeside;
        }
    }
    return standing;
}

Placing WatchedFolders::placeResolved(std::string path) {
    const auto [where, respelled] = standingOf(path);
    if (respelled != nullptr) {
        path = where == Where::kWatched ? *respelled->spelling
                                        : moved(path, respelled->resolved(), *respelled->spelling);
    }
    return {where, std::move(path)};
}

Placing WatchedFolders::placeFolder(std::string_view path) {
    if (!isAbsolute(path)) {
        return {};
    }
    if (isPlainInDrive(path)) {
        return {path == *watched_.front().spelling ? Where::kWatched : Where::kInside,
                std::string(path)};
    }
    const auto known = folders_.find(path);
    return placeResolved(known != folders_.end() ? known->second.resolved : resolved(path));
}

Placing WatchedFolders::placeItem(std::string_view path) {
    if (!isAbsolute(path)) {
        return {};
    }
    const std::size_t slash = path.rfind('/');
    const std::string_view name = path.substr(slash + 1);
    if (isFolderItself(name)) {
        return placeResolved(resolved(path));
    }
    return placeItemIn(folder(path.substr(0, slash)), name);
}

Placing WatchedFolders::placeItemIn(Folders::value_type& folder, std::string_view name) {
    lastFolder_ = &folder;
    return placeResolved(joined(folder.second.resolved, name));
}

Where WatchedFolders::addItem(const std::string& path, GatheredPaths& paths) {
    if (!std::exchange(hasAddedItem_, true)) {
        if (const auto where = addAsGiven(path, paths)) {
            return *where;
        }
    }
    Placing placing = placeItem(path);
    if (!Placing::isHarmful(placing.where)) {
        paths.addCopy(std::move(placing.path));
    }
    return placing.where;
}

// A path that the extension spells in the same way; nothing for another one. Of the first item,
// which mostly is the only one, no more is kept.
std::optional<Where> WatchedFolders::addAsGiven(const std::string& path, GatheredPaths& paths) {
    const std::string_view given = path;
    const std::size_t slash = given.rfind('/');
    if (!isAbsolute(given) || isFolderItself(given.substr(slash + 1))) {
        return std::nullopt;
    }
    const std::string_view folder = given.substr(0, slash);
    if (isPlainInDrive(folder)) {
        paths.add(path);
        return Where::kInside;
    }
    if (!isPlain(folder)) {
        return std::nullopt;
    }
    const auto [where, respelled] = standingOf(given);
    if (respelled != nullptr) {
        return std::nullopt;
    }
    if (!Placing::isHarmful(where)) {
        paths.add(path);
    }
    return where;
}

bool WatchedFolders::addBesideLast(const std::string& path, GatheredPaths& paths) {
    if (lastFolder_ == nullptr || !isItemOf(lastFolder_->first, path)) {
        return false;
    }
    const auto& [given, folder] = *lastFolder_;
    if (!folder.isLookedInto) {
        lookInto(*lastFolder_);
    }
    if (folder.isGivenSo) {
        paths.add(path);
    } else if (!folder.inside.empty()) {
        paths.add(folder.inside, path, given.size() + 1);
    }
    return !folder.inside.empty();
}

// Where an item of any name lies: no watched folder is called like the one that stands for it.
void WatchedFolders::lookInto(Folders::value_type& folder) {
    auto& [given, known] = folder;
    known.isLookedInto = true;
    Placing any = placeResolved(joined(known.resolved, "."));
    if (any.where == Where::kInside && !holdsWatched(known.resolved)) {
        any.path.pop_back();
        known.isGivenSo = isSlashBehind(given, any.path);
        known.inside = std::move(any.path);
    }
}

// Whether a watched folder is an item of this one, by either of its paths.
bool WatchedFolders::holdsWatched(std::string_view folder) {
    const auto isItem = [&](std::string_view path) {
        return isBelow(path, folder) &&
               path.find('/', folder == "/" ? 1 : folder.size() + 1) == std::string_view::npos;
    };
    return std::ranges::any_of(watched(), [&](const Watched& watched) {
        return isItem(*watched.spelling) || isItem(watched.resolved());
    });
}

WatchedFolders::Folders::value_type& WatchedFolders::folder(std::string_view path) {
    const auto known = folders_.find(path);
    if (known != folders_.end()) {
        return *known;
    }
    Folder folder;
    folder.resolved = resolved(path.empty() ? "/" : path);
    return *folders_.emplace(path, std::move(folder)).first;
}

} // namespace Shell
