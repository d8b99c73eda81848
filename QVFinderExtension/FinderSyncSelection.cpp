// What is selected and targeted, as the host knows it: paths relative to the drive.

#include "QVFinderExtension/FinderSync.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Exception.h"

namespace {

constexpr const char* kTrash = "Trash";
constexpr const char* kSpecialFolders[] = {kTrash, "Shared Folders"};

// Where in a path's components the name of the top-level folder stands, after the root.
constexpr std::size_t kTopLevel = 1;

NS::Ref<FI::FinderSyncController> controller() {
    return FI::FinderSyncController::defaultController();
}

NS::RefPtr<NS::String> pathOf(const NS::RefPtr<NS::URL>& url) {
    return url ? url->path() : nullptr;
}

bool isNamed(const NS::Object& component, const char* name) {
    return component.isEqual(NS::str(name).get());
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

FinderSync::TrashStatus FinderSync::trashStatusSelection() const {
    auto status = TrashStatus::kNone;
    const auto paths = relativeSelectionArray();
    for (const auto& path : *paths) {
        const auto components = static_cast<const NS::String&>(*path).pathComponents();
        const std::size_t count = components->count();
        const bool underTrash =
            count > kTopLevel && isNamed(components->objectAtIndex(kTopLevel), kTrash);
        if (underTrash && count == kTopLevel + 1) {
            status = TrashStatus::kNone; // the Trash itself: what follows starts afresh
            continue;
        }
        const auto own = underTrash ? TrashStatus::kInTrash : TrashStatus::kOutsideTrash;
        if (status != TrashStatus::kNone && status != own) {
            return TrashStatus::kNone;
        }
        status = own;
    }
    return status;
}

bool FinderSync::isSpecialFolderSelected() const {
    const auto paths = relativeSelectionArray();
    for (const auto& path : *paths) {
        const auto components = static_cast<const NS::String&>(*path).pathComponents();
        if (components->count() == 0) {
            continue;
        }
        // The drive's root has no top-level name: reading it raises, and is meant to.
        const auto topLevel = components->objectAtIndex(kTopLevel);
        for (const char* const special : kSpecialFolders) {
            if (isNamed(topLevel, special)) {
                return true;
            }
        }
    }
    return false;
}

void FinderSync::beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    comms()->beginObserving(relativePathFrom(url->path()));
}

void FinderSync::endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) {
    comms()->endObserving(relativePathFrom(url->path()));
}
