// What is selected and targeted, as the host knows it: paths relative to the drive.

#include "QVFinderExtension/FinderSync.h"

#include "Platform/Finder/FinderSyncController.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kTrash = "Trash";
constexpr std::string_view kSharedFolders = "Shared Folders";

// The relative path of the drive's own folder.
constexpr std::string_view kDriveItself = "/";

NS::Ref<FI::FinderSyncController> controller() {
    return FI::FinderSyncController::defaultController();
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

    // What follows it in a path; nothing when it is no prefix of that. Valid until the next call.
    std::optional<std::string_view> restOf(std::string_view path) {
        if (!isText_) [[unlikely]] {
            return restOfText(path);
        }
        return path.starts_with(bytes_) ? std::optional(path.substr(bytes_.size())) : std::nullopt;
    }

  private:
    // The last byte of a drive's path that is not UTF-8 may be the first of a character in another.
    [[gnu::cold]] std::optional<std::string_view> restOfText(std::string_view path) {
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

// Where an item of the drive lies, as the menus tell items apart.
enum class Place : std::uint8_t { kDrive, kTrashItself, kInTrash, kShared, kElsewhere };

constexpr bool beginsWithComponent(std::string_view path, std::string_view component) {
    return path.front() == component.front() && path.starts_with(component) &&
           (path.size() == component.size() || path[component.size()] == '/');
}

// Told by the second component of a drive-relative path, the first being the root, and by whether
// there is a third. The path has no slash at its end, unless it is the root.
constexpr Place placeOf(std::string_view path) {
    const std::size_t rootEnd = path.starts_with('/') ? 0 : path.find('/');
    const std::size_t second = path.find_first_not_of('/', rootEnd);
    if (second == std::string_view::npos) {
        return Place::kDrive;
    }
    const std::string_view rest = path.substr(second);
    if (beginsWithComponent(rest, kTrash)) {
        return rest.size() == kTrash.size() ? Place::kTrashItself : Place::kInTrash;
    }
    return beginsWithComponent(rest, kSharedFolders) ? Place::kShared : Place::kElsewhere;
}

// Calls visit(path) with the drive-relative path, in bytes, of each selected item that is on the
// drive, until it returns false.
template <class Visitor>
void visitSelectionOnDrive(const NS::RefPtr<NS::String>& drive, Visitor&& visit) {
    const auto selection = controller()->selection();
    if (!drive || !selection) {
        return;
    }
    DrivePrefix prefix(*drive);
    selection->visitPaths([&](std::string_view path) {
        const std::optional<std::string_view> rest = prefix.restOf(path);
        return !rest || visit(rest->empty() ? kDriveItself : *rest);
    });
}

// Calls visit(place) for these items, of those in a row that lie in the same place for the first
// only: the others tell nothing new.
void visitPlacesOfSelection(const NS::RefPtr<NS::String>& drive,
                            const std::function<bool(Place)>& visit) {
    std::optional<Place> last;
    visitSelectionOnDrive(drive, [&](std::string_view path) {
        const Place place = placeOf(path);
        return place == last || visit(last.emplace(place));
    });
}

// Where the items looked at so far lie.
class TrashScan {
  public:
    // Nothing that follows changes a mixed selection.
    bool isMixed() const noexcept { return isMixed_; }
    FinderSync::TrashStatus status() const noexcept {
        return isMixed_ ? FinderSync::TrashStatus::kNone : status_;
    }
    void take(Place item) noexcept {
        if (item == Place::kTrashItself) {
            status_ =
                FinderSync::TrashStatus::kNone; // the Trash itself: what follows starts afresh
            return;
        }
        const auto own = item == Place::kInTrash ? FinderSync::TrashStatus::kInTrash
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
    void take(Place item) {
        if (!hasFound_ && item == Place::kDrive) {
            // It has no second component: reading that raises, and is meant to.
            (void)NS::str(kDriveItself)->pathComponents()->objectAtIndex(1);
        }
        hasFound_ = hasFound_ || (item != Place::kDrive && item != Place::kElsewhere);
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

NS::Ref<NS::Array> FinderSync::relativeSelectionArray() const {
    const auto paths = NS::make<NS::MutableArray>();
    visitSelectionOnDrive(drivePath(), [&](std::string_view path) {
        paths->addObject(NS::String::fromFileSystemRepresentation(path));
        return true;
    });
    return paths;
}

FinderSync::TrashStatus FinderSync::trashStatusSelection() const {
    TrashScan trash;
    visitPlacesOfSelection(drivePath(), [&](Place place) {
        trash.take(place);
        return !trash.isMixed();
    });
    return trash.status();
}

bool FinderSync::isSpecialFolderSelected() const {
    SpecialFolderScan special;
    visitPlacesOfSelection(drivePath(), [&](Place place) {
        special.take(place);
        return !special.hasFound();
    });
    return special.hasFound();
}

FinderSync::SelectionTraits FinderSync::traitsOfSelection() const {
    TrashScan trash;
    SpecialFolderScan special;
    visitPlacesOfSelection(drivePath(), [&](Place place) {
        special.take(place);
        trash.take(place);
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
