// What is selected and targeted, as the host knows it: paths relative to the drive.

#include "QVFinderExtension/FinderSync.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/PathComponents.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kTrash = "Trash";
constexpr std::string_view kSpecialFolders[] = {kTrash, "Shared Folders"};

// The relative path of the drive's own folder.
constexpr std::string_view kDriveItself = "/";

// Where in a path's components the name of the top-level folder stands, after the root.
constexpr std::size_t kTopLevel = 1;

NS::Ref<FI::FinderSyncController> controller() {
    return FI::FinderSyncController::defaultController();
}

bool isSpecialFolder(std::string_view name) {
    return std::ranges::find(kSpecialFolders, name) != std::ranges::end(kSpecialFolders);
}

NS::RefPtr<NS::String> pathOf(const NS::RefPtr<NS::URL>& url) {
    return url ? url->path() : nullptr;
}

// Finds in paths what follows the drive's own. Both are texts; mostly their bytes tell as much, and
// a selection can be large.
class DrivePrefix {
  public:
    explicit DrivePrefix(const NS::String& drive) : drive_(drive) {
        if (drive.isAscii()) {
            bytes_ = drive.ascii();
            return;
        }
        storage_ = drive.fileSystemRepresentation();
        bytes_ = storage_;
        const auto text = NS::String::fromUtf8(storage_);
        isText_ = text && text->isEqualToString(drive);
    }
    DrivePrefix(const DrivePrefix&) = delete;
    DrivePrefix& operator=(const DrivePrefix&) = delete;

    // Nothing for a path that is not on the drive. Valid until the next call.
    std::optional<std::string_view> restOf(std::string_view path) {
        if (!isText_) {
            return restOfText(path);
        }
        return path.starts_with(bytes_) ? std::optional(path.substr(bytes_.size())) : std::nullopt;
    }

  private:
    // The last byte of a drive's path that is not UTF-8 may be the first of a character in another.
    std::optional<std::string_view> restOfText(std::string_view path) {
        const auto text = NS::String::fromFileSystemRepresentation(path);
        if (!text->hasPrefix(drive_)) {
            return std::nullopt;
        }
        rest_ = text->substringFromIndex(drive_.length())->fileSystemRepresentation();
        return rest_;
    }

    const NS::String& drive_;
    std::string storage_;
    std::string_view bytes_;
    bool isText_ = true;
    std::string rest_;
};

// What classifying needs of a drive-relative path, read in place.
struct TopLevel {
    // As far as they are looked at: what follows the top-level folder in the Trash only.
    std::size_t componentCount = 0;
    bool isTrash = false;
    bool isSpecial = false;
};

TopLevel topLevelOf(std::string_view relativePath) {
    TopLevel topLevel;
    NS::visitPathComponents(relativePath, [&](std::string_view component) {
        const std::size_t index = topLevel.componentCount++;
        if (index == kTopLevel) {
            topLevel.isTrash = component == kTrash;
            topLevel.isSpecial = isSpecialFolder(component);
        }
        return index < kTopLevel || (index == kTopLevel && topLevel.isTrash);
    });
    return topLevel;
}

// Where the items looked at so far lie.
class TrashScan {
  public:
    // Nothing that follows changes a mixed selection.
    bool isMixed() const noexcept { return isMixed_; }
    FinderSync::TrashStatus status() const noexcept {
        return isMixed_ ? FinderSync::TrashStatus::kNone : status_;
    }
    void take(const TopLevel& item) noexcept {
        if (item.isTrash && item.componentCount == kTopLevel + 1) {
            status_ =
                FinderSync::TrashStatus::kNone; // the Trash itself: what follows starts afresh
            return;
        }
        const auto own = item.isTrash ? FinderSync::TrashStatus::kInTrash
                                      : FinderSync::TrashStatus::kOutsideTrash;
        isMixed_ = isMixed_ || (status_ != FinderSync::TrashStatus::kNone && status_ != own);
        status_ = own;
    }

  private:
    FinderSync::TrashStatus status_ = FinderSync::TrashStatus::kNone;
    bool isMixed_ = false;
};

// Whether one of the items looked at so far is special.
class SpecialFolderScan {
  public:
    bool hasFound() const noexcept { return hasFound_; }
    void take(const TopLevel& item) {
        if (!hasFound_ && item.componentCount == kTopLevel) {
            // The drive's root has no top-level name: reading it raises, and is meant to.
            (void)NS::str("/")->pathComponents()->objectAtIndex(kTopLevel);
        }
        hasFound_ = hasFound_ || item.isSpecial;
    }

  private:
    bool hasFound_ = false;
};

} // namespace

bool FinderSync::isTargetOnDrive() const {
    return static_cast<bool>(relativePathFrom(pathFromTarget()));
}

NS::RefPtr<NS::String> FinderSync::pathFromTarget() const {
    return pathOf(controller()->targetedURL());
}

NS::RefPtr<NS::String> FinderSync::pathFromSelectionOrTarget() const {
    const auto selection = controller()->selection();
    const auto path = selection ? selection->firstPath() : nullptr;
    return path ? path : pathFromTarget();
}

NS::RefPtr<NS::String> FinderSync::relativePathFrom(const NS::RefPtr<NS::String>& path) const {
    const auto drive = drivePath();
    if (!path || !drive || !path->hasPrefix(*drive)) {
        return nullptr;
    }
    if (path->length() == drive->length()) {
        return NS::str(kDriveItself);
    }
    return path->substringFromIndex(drive->length());
}

template <class Visitor>
void FinderSync::visitSelectionOnDrive(Visitor&& visit) const {
    const auto drive = drivePath();
    const auto selection = controller()->selection();
    if (!drive || !selection) {
        return;
    }
    DrivePrefix prefix(*drive);
    selection->visitPaths([&](std::string_view path) {
        const auto rest = prefix.restOf(path);
        return !rest || visit(rest->empty() ? kDriveItself : *rest);
    });
}

NS::Ref<NS::Array> FinderSync::relativeSelectionArray() const {
    const auto paths = NS::make<NS::MutableArray>();
    visitSelectionOnDrive([&](std::string_view path) {
        paths->addObject(NS::String::fromFileSystemRepresentation(path));
        return true;
    });
    return paths;
}

FinderSync::TrashStatus FinderSync::trashStatusSelection() const {
    TrashScan trash;
    visitSelectionOnDrive([&](std::string_view path) {
        trash.take(topLevelOf(path));
        return !trash.isMixed();
    });
    return trash.status();
}

bool FinderSync::isSpecialFolderSelected() const {
    SpecialFolderScan special;
    visitSelectionOnDrive([&](std::string_view path) {
        special.take(topLevelOf(path));
        return !special.hasFound();
    });
    return special.hasFound();
}

FinderSync::SelectionTraits FinderSync::traitsOfSelection() const {
    TrashScan trash;
    SpecialFolderScan special;
    visitSelectionOnDrive([&](std::string_view path) {
        const TopLevel item = topLevelOf(path);
        special.take(item);
        trash.take(item);
        return !trash.isMixed() || !special.hasFound();
    });
    return {trash.status(), special.hasFound()};
}

void FinderSync::beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    comms()->beginObserving(relativePathFrom(url->path()));
}

void FinderSync::endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    comms()->endObserving(relativePathFrom(url->path()));
}
