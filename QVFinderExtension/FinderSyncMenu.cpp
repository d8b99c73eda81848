// The menus and the toolbar item, and what picking an entry asks of the host.

#include "QVFinderExtension/FinderSync.h"

#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Finder/Workspace.h"
#include "Platform/Foundation/Format.h"
#include "Utilities/QVUIUtilities.h"

namespace {

constexpr const char* kTitle = "Fennmoor Cloud";
constexpr const char* kToolbarImage = "MainOnline";
// Seventeen em dashes. An entry like any other: it has always been shown as text.
constexpr const char* kDashes = "\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014"
                                "\u2014\u2014\u2014\u2014\u2014\u2014\u2014\u2014";

struct Entry {
    const char* title;
    NS::Selector action;
};

constexpr Entry kShare{"QV: Share", {"shareItem:"}};
constexpr Entry kShowProperties{"QV: Show Properties", {"showProps"}};
constexpr Entry kMoveToTrash{"QV: Move To Trash", {"moveToTrash"}};
constexpr Entry kRestore{"QV: Restore", {"restore"}};
constexpr Entry kDelete{"QV: Delete", {"delete"}};
constexpr Entry kRefreshFolder{"QV: Refresh Folder", {"refreshFolder"}};
constexpr Entry kToolbarRefreshFolder{"Refresh Folder", {"refreshFolder"}};
constexpr NS::Selector kEmptyTrash{"emptyTrash"};

NS::Ref<NS::MenuItem> makeItem(NS::Ref<NS::String> title, NS::Selector action) {
    static const NS::Ref<NS::String>& noKey = *new NS::Ref<NS::String>(NS::str(""));
    return NS::make<NS::MenuItem>(std::move(title), action, noKey);
}

// Its title is made once: menus are asked for often, and all of them show the same.
template <const Entry& entry>
void add(NS::Menu& menu) {
    static const NS::Ref<NS::String>& title = *new NS::Ref<NS::String>(NS::str(entry.title));
    menu.addItem(makeItem(title, entry.action));
}

void addDashes(NS::Menu& menu) {
    const auto dashes = makeItem(NS::str(kDashes), {});
    dashes->setEnabled(false);
    menu.addItem(dashes);
}

std::size_t selectedItemCount() {
    const auto selection = FI::FinderSyncController::defaultController()->selection();
    return selection ? selection->count() : 0;
}

} // namespace

NS::RefPtr<NS::Menu> FinderSync::menuForMenuKind(FI::MenuKind kind) {
    const std::size_t selected = selectedItemCount();
    static const NS::Ref<NS::String>& title = *new NS::Ref<NS::String>(NS::str(kTitle));
    const auto menu = NS::make<NS::Menu>(title);
    if (kind == FI::MenuKind::kToolbarItemMenu) {
        addToolbarEntries(menu);
    } else {
        addContextualEntries(menu, kind, selected);
    }
    return menu;
}

void FinderSync::addToolbarEntries(NS::Menu& menu) {
    // The answer comes later, for the next menu.
    comms()->requestUserInfo();
    menu.addItem(makeItem(emptyTrashTitle(), kEmptyTrash));
    if (isTargetOnDrive()) {
        addDashes(menu);
        add<kToolbarRefreshFolder>(menu);
    }
    if (const auto storage = storageMenuItem()) {
        addDashes(menu);
        menu.addItem(NS::Ref<NS::MenuItem>(*storage));
    }
}

void FinderSync::addContextualEntries(NS::Menu& menu, FI::MenuKind kind,
                                      std::size_t selected) const {
    const SelectionTraits traits = traitsOfSelection();
    const bool forContainer = kind == FI::MenuKind::kContextualMenuForContainer;
    if ((forContainer || selected == 1) && !traits.isSpecial) {
        add<kShare>(menu);
        add<kShowProperties>(menu);
    }
    if (kind == FI::MenuKind::kContextualMenuForItems && !traits.isSpecial &&
        traits.trash == TrashStatus::kOutsideTrash) {
        add<kMoveToTrash>(menu);
    }
    if (traits.trash == TrashStatus::kInTrash) {
        add<kRestore>(menu);
        add<kDelete>(menu);
    }
    if (forContainer) {
        add<kRefreshFolder>(menu);
    }
}

NS::Ref<NS::String> FinderSync::emptyTrashTitle() const {
    const auto info = NS::cast<QVUserInfoItem>(storageInfo());
    return info ? NS::stringWithFormat("Empty Trash (%@)", info->trashCount())
                : NS::str("Empty Trash");
}

NS::RefPtr<NS::MenuItem> FinderSync::storageMenuItem() const {
    const auto info = NS::cast<QVUserInfoItem>(storageInfo());
    if (!info) {
        return nullptr;
    }
    auto item = makeItem(QVUIUtilities::formatStorageInfo(*info), {});
    item->setEnabled(false);
    return item;
}

NS::RefPtr<NS::String> FinderSync::toolbarItemName() {
    return NS::str(kTitle);
}

NS::RefPtr<NS::String> FinderSync::toolbarItemToolTip() {
    return NS::stringWithFormat("Mounted at %@", drivePath());
}

NS::RefPtr<NS::Image> FinderSync::toolbarItemImage() {
    return NS::Image::imageNamed(*NS::str(kToolbarImage));
}

void FinderSync::shareItem(NS::RefPtr<NS::Object>) {
    comms()->share(relativePathFrom(pathFromSelectionOrTarget()));
}

void FinderSync::showProps() {
    comms()->showProps(relativePathFrom(pathFromSelectionOrTarget()));
}

void FinderSync::refreshFolder() {
    comms()->refreshFolder(relativePathFrom(pathFromTarget()));
}

void FinderSync::moveToTrash() {
    comms()->moveToTrash(relativeSelectionArray());
}

void FinderSync::restore() {
    comms()->restore(relativeSelectionArray());
}

void FinderSync::delete_() {
    comms()->delete_(relativeSelectionArray());
}

void FinderSync::emptyTrash() {
    comms()->emptyTrash();
}

void FinderSync::goToDrive() {
    (void)NS::Workspace::sharedWorkspace()->openFile(drivePath());
}
