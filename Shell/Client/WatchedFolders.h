#pragma once

#include "Shell/Client/GatheredPaths.h"

#include <cstddef>
#include <map>
#include <optional>
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
    // Of an item that the extension could not make the menu of, or would take for something else.
    static constexpr bool isHarmful(Where where) noexcept {
        return where == Where::kWatched || where == Where::kBeside || where == Where::kNowhere;
    }
};

// The folders that an extension watches, and where paths stand to them. Paths are compared by
// component, symbolic links resolved on both sides, since the extension itself compares text only.
//
// Made for one question: what is a link, and where it leads, may be otherwise at the next one. Each
// folder is resolved once.
class WatchedFolders {
  public:
    // Absolute paths as the extension spells them, which outlive this.
    explicit WatchedFolders(const std::vector<std::string>& folders);
    explicit WatchedFolders(std::vector<std::string>&&) = delete;

    // A folder, symbolic links followed.
    Placing placeFolder(std::string_view path);
    // An item, which is not followed itself, and need not exist.
    Placing placeItem(std::string_view path);
    // Adds the path of an item that is beside the one that was placed last, and was inside, and is
    // inside as well for that: most of many are, and it takes little to see. False for another one.
    bool addBesideLast(const std::string& path, GatheredPaths& paths);
    // Places an item and adds its path, which outlives the paths, unless it is harmful.
    Placing::Where addItem(const std::string& path, GatheredPaths& paths);

  private:
    struct Watched {
        const std::string* spelling;
        std::string target; // when it is resolved to something else

        const std::string& resolved() const noexcept { return target.empty() ? *spelling : target; }
    };
    // Where a path without links stands, and, if another spelling is the extension's, in which one.
    struct Standing {
        Placing::Where where = Placing::Where::kOutside;
        const Watched* respelled = nullptr;
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

    bool isPlain(std::string_view path);
    bool isPlainInDrive(std::string_view path);
    std::string resolved(std::string_view path);
    const std::vector<Watched>& watched();
    Standing standingOf(std::string_view path);
    Placing placeResolved(std::string path);
    std::optional<Placing::Where> addAsGiven(const std::string& path, GatheredPaths& paths);
    bool holdsWatched(std::string_view folder);
    Folders::value_type& folder(std::string_view path);
    Placing placeItemIn(Folders::value_type& folder, std::string_view name);
    void lookInto(Folders::value_type& folder);

    // The watched folders are mostly on the way to the first folder that is looked at, which tells
    // of both: they are resolved after it.
    std::vector<Watched> watched_;
    bool isWatchedResolved_ = false;
    std::string linkFree_;     // the path last seen to hold no link
    std::string plainInDrive_; // the path in the only watched folder last seen to hold none there
    bool hasAddedItem_ = false;
    Folders folders_;
    Folders::value_type* lastFolder_ = nullptr; // of the last item whose own name told its place
};

} // namespace Shell
