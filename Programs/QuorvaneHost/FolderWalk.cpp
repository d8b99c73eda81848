#include "Programs/QuorvaneHost/FolderWalk.h"

#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Programs/QuorvaneHost/DriveTree.h"

#include <fcntl.h>
#include <optional>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

// So many of the innermost folders stay open; those above are found again as "..".
constexpr std::size_t kOpenFolders = 16;

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::optional<struct stat> statusOf(int folder, const std::string& name) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    return status;
}

bool isSame(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// A folder on the way down from where the walk began.
struct Level {
    std::string name;
    struct stat status;
    NS::FileDescriptor folder;
    std::vector<std::string> rest; // entries still to visit
};

class Levels {
  public:
    explicit Levels(int folder) {
        struct stat status {};
        if (::fstat(folder, &status) == 0) {
            push(NS::FileDescriptor(::openat(folder, ".", kFolderFlags)), "", status);
        }
    }

    bool empty() const { return levels_.empty(); }
    Level& innermost() { return levels_.back(); }

    // Goes into a folder of the innermost one; one that cannot be opened has nothing in it.
    void enter(const std::string& name, const struct stat& status) {
        push(NS::FileDescriptor(::openat(innermost().folder.get(), name.c_str(), kFolderFlags)),
             name, status);
    }
    // Goes back to the folder above and returns the one that was left. False in its place when
    // what is above is not what was.
    std::optional<Level> leave() {
        Level left = std::move(levels_.back());
        levels_.pop_back();
        if (!levels_.empty() && !levels_.back().folder) {
            reopen(levels_.back(), left.folder.get());
            if (!levels_.back().folder) {
                return std::nullopt;
            }
        }
        return left;
    }

  private:
    void push(NS::FileDescriptor folder, const std::string& name, const struct stat& status) {
        std::vector<std::string> names =
            folder ? entriesIn(folder.get()) : std::vector<std::string>();
        levels_.push_back({name, status, std::move(folder), std::move(names)});
        if (levels_.size() > kOpenFolders) {
            levels_[levels_.size() - kOpenFolders - 1].folder.reset();
        }
    }
    static void reopen(Level& level, int below) {
        NS::FileDescriptor folder(::openat(below, "..", kFolderFlags));
        struct stat status {};
        if (folder && ::fstat(folder.get(), &status) == 0 && isSame(status, level.status)) {
            level.folder = std::move(folder);
        }
    }

    std::vector<Level> levels_;
};

} // namespace

bool FolderWalk::below(int folder) const {
    Levels levels(folder);
    while (!levels.empty()) {
        Level& level = levels.innermost();
        if (!level.rest.empty()) {
            const std::string name = std::move(level.rest.back());
            level.rest.pop_back();
            const auto status = statusOf(level.folder.get(), name);
            if (status) {
                visit_(level.folder.get(), name, *status);
            }
            if (status && S_ISDIR(status->st_mode)) {
                levels.enter(name, *status);
            }
            continue;
        }
        const auto left = levels.leave();
        if (!left) {
            return false;
        }
        if (!levels.empty()) {
            leave_(levels.innermost().folder.get(), left->name, left->status);
        }
    }
    return true;
}

FolderContents FolderContents::below(int folder, const std::string& name) {
    FolderContents contents;
    const FolderWalk walk(
        [&](int, const std::string&, const struct stat& status) {
            ++(S_ISDIR(status.st_mode) ? contents.folders : contents.files);
            contents.bytes +=
                S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
        },
        [](int, const std::string&, const struct stat&) {});
    const NS::FileDescriptor opened(::openat(folder, name.c_str(), kFolderFlags));
    (void)walk.below(opened.get()); // what was counted till then counts
    return contents;
}

bool removeWhole(int folder, const std::string& name, const std::function<void()>& beforeStep) {
    const auto status = statusOf(folder, name);
    if (!status) {
        return false;
    }
    bool isWhole = true;
    const auto remove = [&](int in, const std::string& entry, int flags) {
        beforeStep();
        isWhole = ::unlinkat(in, entry.c_str(), flags) == 0 && isWhole;
    };
    if (!S_ISDIR(status->st_mode)) {
        remove(folder, name, 0);
        return isWhole;
    }
    const FolderWalk walk(
        [&](int in, const std::string& entry, const struct stat& found) {
            if (!S_ISDIR(found.st_mode)) {
                remove(in, entry, 0);
            }
        },
        [&](int in, const std::string& entry, const struct stat&) {
            remove(in, entry, AT_REMOVEDIR);
        });
    const NS::FileDescriptor opened(::openat(folder, name.c_str(), kFolderFlags));
    const bool isWalked = !opened || walk.below(opened.get());
    remove(folder, name, AT_REMOVEDIR);
    return isWhole && isWalked;
}
