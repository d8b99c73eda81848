#pragma once

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
// Made for one question: what is a link, and where it leads, may be otherwise at the next one. The
// folders that items are in are resolved once.
class WatchedFolders {
  public:
    // Absolute paths as the extension spells them.
    explicit WatchedFolders(const std::vector<std::string>& folders);

    // A folder, symbolic links followed.
    Placing placeFolder(std::string_view path) const;
    // An item, which is not followed itself, and need not exist.
    Placing placeItem(std::string_view path);

  private:
    struct Watched {
        std::string spelling;
        std::string resolved;
    };

    Placing placeResolved(std::string path) const;
    const std::string& resolvedFolder(std::string_view folder);

    std::vector<Watched> watched_;
    std::map<std::string, std::string, std::less<>> resolvedFolders_;
};

} // namespace Shell
