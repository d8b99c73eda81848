#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Shell {

// Where a path stands to the watched folders.
struct Placing {
    enum class Where : char {
        kOutside,
        kBeside,  // outside, but its text begins like a watched folder's
        kWatched, // a watched folder itself
        kInside,
    };
    Where where = Where::kOutside;
    // Without symbolic links; of a watched folder and what is in it, begun as the extension spells
    // it.
    std::string path;
};

// The folders that an extension watches, and where paths stand to them. Paths are compared by
// component, symbolic links resolved on both sides, since the extension itself compares text only.
class WatchedFolders {
  public:
    // Absolute paths as the extension spells them.
    void set(std::vector<std::string> folders);
    const std::vector<std::string>& folders() const noexcept { return folders_; }

    // A folder, symbolic links followed.
    Placing placeFolder(std::string_view path) const;

    // Items of one question: each folder that they are in is resolved once.
    class Items {
      public:
        explicit Items(const WatchedFolders& watched) : watched_(watched) {}
        // An item, which is not followed itself, and need not exist.
        Placing place(std::string_view path);

      private:
        const std::string& resolvedFolder(std::string_view folder);

        const WatchedFolders& watched_;
        std::map<std::string, std::string, std::less<>> resolved_;
    };

  private:
    Placing placeResolved(std::string path) const;

    std::vector<std::string> folders_;
    std::vector<std::string> resolved_; // in the same order
};

} // namespace Shell
