#pragma once

#include "Shell/Client/GatheredPaths.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Shell {

// Where a path stands to the watched folders.
struct Placing {
    enum class Where : char {
        kNowhere, // it is no absolute path
        kOutside,
        kBeside,  // outside, but its text begins like a watched folder's
        kWatched, // a watched folder itself
        kInside,
    };
    Where where = Where::kNowhere;
    // Without symbolic links; of a watched folder and what is in it, begun as the extension spells
    // it. Empty for what is nowhere.
    std::string path;

    bool isOnDrive() const noexcept { return where == Where::kWatched || where == Where::kInside; }
};

// The folders that an extension watches, and where paths stand to them. Paths are compared by
// component, symbolic links resolved on both sides, since the extension itself compares text only.
//
// Made for one question: what is a link, and where it leads, may be otherwise at the next one. Each
// folder is resolved once.
class WatchedFolders {
  public:
    // Absolute paths as the extension spells them.
    explicit WatchedFolders(const std::vector<std::string>& folders);

    // A folder, symbolic links followed.
    Placing placeFolder(std::string_view path);
    // An item, which is not followed itself, and need not exist.
    Placing placeItem(std::string_view path);
    // Adds the path of an item that is beside the one that was placed last, and was inside, and is
    // inside as well for that: most of many are, and it takes little to see. False for another one.
    bool addBesideLast(const std::string& path, GatheredPaths& paths);

  private:
    struct Watched {
        std::string spelling;
        std::string resolved;
    };

    // A folder that was resolved.
    struct Folder {
        std::string resolved;
        // When it was looked into for a second item:
        bool isLookedInto = false;
        // with a slash at its end, as the extension spells it, where every item in it is inside;
        // else empty;
        std::string inside;
        // and whether the file manager spells it so.
        bool isGivenSo = false;
    };
    using Folders = std::map<std::string, Folder, std::less<>>;

    std::string resolved(std::string_view path);
    const std::vector<Watched>& watched();
    Placing placeResolved(std::string path);
    bool holdsWatched(std::string_view folder);
    Folders::value_type& folder(std::string_view path);
    Placing placeItemIn(Folders::value_type& folder, std::string_view name);
    void lookInto(Folders::value_type& folder);

    // The watched folders are mostly on the way to the first folder that is looked at, which tells
    // of both: they are resolved after it.
    std::vector<Watched> watched_;
    bool isWatchedResolved_ = false;
    std::string linkFree_; // the path last seen to hold no link
    Folders folders_;
    Folders::value_type* lastFolder_ = nullptr; // of the last item whose own name told its place
};

} // namespace Shell
