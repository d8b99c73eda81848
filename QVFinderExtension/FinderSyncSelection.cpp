// What is selected and targeted, as the host knows it: paths relative to the drive.

#include "QVFinderExtension/FinderSync.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/PathComponents.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::string_view kTrash = "Trash";
constexpr std::string_view kSpecialFolders[] = {kTrash, "Shared Folders"};

// Where in a path's components the name of the top-level folder stands, after the root.
constexpr std::size_t kTopLevel = 1;

NS::Ref<FI::FinderSyncController> controller() {
    return FI::FinderSyncController::defaultController();
}

NS::RefPtr<NS::String> pathOf(const NS::RefPtr<NS::URL>& url) {
    return url ? url->path() : nullptr;
}

// What classifying needs of a drive-relative path, read in place: a selection can be large.
struct TopLevel {
    std::size_t componentCount = 0; // no more than one component below the top-level folder counts
    bool isTrash = false;
    bool isSpecial = false;
};

bool isNamed(std::string_view component, std::string_view name) {
    return component == name;
}
bool isNamed(std::u16string_view component, std::string_view name) {
    return std::ranges::equal(component, name);
}

template <class Unit>
TopLevel topLevelOf(std::basic_string_view<Unit> relativePath) {
    TopLevel topLevel;
    NS::visitPathComponents(relativePath, [&](auto component) {
        if (topLevel.componentCount == kTopLevel) {
            topLevel.isTrash = isNamed(component, kTrash);
            topLevel.isSpecial = std::ranges::any_of(
                kSpecialFolders, [&](auto special) { return isNamed(component, special); });
        }
        return ++topLevel.componentCount < kTopLevel + 2;
    });
    return topLevel;
}

// The path on the drive behind a length of mount path; the drive itself is its root.
TopLevel topLevelBehind(std::size_t mountPath, const NS::String& path) {
    if (path.length() == mountPath) {
        return {.componentCount = 1};
    }
    return path.isAscii() ? topLevelOf(path.ascii().substr(mountPath))
                          : topLevelOf(path.utf16().substr(mountPath));
}

} // namespace

bool FinderSync::isTargetOnDrive() const {
    return static_cast<bool>(relativePathFrom(pathFromTarget()));
}

NS::RefPtr<NS::String> FinderSync::pathFromTarget() const {
    return pathOf(controller()->targetedURL());
}

NS::RefPtr<NS::String> FinderSync::pathFromSelectionOrTarget() const {
    const auto selection = controller()->selectedItemURLs();
    const auto path = pathOf(selection ? NS::cast<NS::URL>(selection->firstObject()) : nullptr);
    return path ? path : pathFromTarget();
}

NS::RefPtr<NS::String> FinderSync::relativePathFrom(const NS::RefPtr<NS::String>& path) const {
    const auto drive = drivePath();
    if (!path || !drive || !path->hasPrefix(*drive)) {
        return nullptr;
    }
    if (path->length() == drive->length()) {
        return NS::str("/");
    }
    return path->substringFromIndex(drive->length());
}

NS::Ref<NS::Array> FinderSync::relativeSelectionArray() const {
    const auto paths = NS::make<NS::MutableArray>();
    if (const auto selection = controller()->selectedItemURLs()) {
        for (const auto& url : *selection) {
            if (const auto path =
                    relativePathFrom(NS::cast<NS::URL>(NS::RefPtr<NS::Object>(url))->path())) {
                paths->addObject(path);
            }
        }
    }
    return paths;
}

template <class Visitor>
void FinderSync::visitSelectionOnDrive(Visitor&& visit) const {
    const auto drive = drivePath();
    const auto selection = controller()->selectedItemURLs();
    if (!drive || !selection) {
        return;
    }
    for (const auto& item : *selection) {
        const auto path = NS::cast<NS::URL>(NS::RefPtr<NS::Object>(item))->path();
        if (path && path->hasPrefix(*drive) && !visit(topLevelBehind(drive->length(), *path))) {
            return;
        }
    }
}

FinderSync::TrashStatus FinderSync::trashStatusSelection() const {
    auto status = TrashStatus::kNone;
    visitSelectionOnDrive([&](const TopLevel& item) {
        if (item.isTrash && item.componentCount == kTopLevel + 1) {
            status = TrashStatus::kNone; // the Trash itself: what follows starts afresh
            return true;
        }
        const auto own = item.isTrash ? TrashStatus::kInTrash : TrashStatus::kOutsideTrash;
        const bool isMixed = status != TrashStatus::kNone && status != own;
        status = isMixed ? TrashStatus::kNone : own;
        return !isMixed;
    });
    return status;
}

bool FinderSync::isSpecialFolderSelected() const {
    bool special = false;
    visitSelectionOnDrive([&](const TopLevel& item) {
        if (item.componentCount == kTopLevel) {
            // The drive's root has no top-level name: reading it raises, and is meant to.
            (void)NS::str("/")->pathComponents()->objectAtIndex(kTopLevel);
        }
        special = item.isSpecial;
        return !special;
    });
    return special;
}

void FinderSync::beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    comms()->beginObserving(relativePathFrom(url->path()));
}

void FinderSync::endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    comms()->endObserving(relativePathFrom(url->path()));
}
