#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Platform/Foundation/Property.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVFinderExtension/QVExtensionCommsClient.h"

#include <cstddef>
#include <cstdint>

// The extension's principal object: one in the process, made on the main thread, there until the
// end.
//
// It does not know where the drive is until the host application tells it, and its initialiser
// waits for that. What the host sends is taken as it comes.
class FinderSync final : public FI::FinderSync {
    NS_OBJECT(FinderSync)
  public:
    FinderSync() = default;
    ~FinderSync() override;

    // Sets up logging, prunes old logs, connects to the host and waits, turning the run loop, until
    // the host has sent the drive's mount path: for ever if it never does. Ends the process with
    // status 1 when there is no host.
    void init();

    // Messages of the host. The mount path (which may come again) becomes the watched folder; the
    // account record replaces the one before; shutdown ends the process with status 0 at once.
    void extensionInit(NS::RefPtr<NS::String> path);
    void receivedUserInfo(NS::RefPtr<NS::Object> info);
    [[noreturn]] void shutdown();

    // What is selected, and the targeted folder, as the file manager has them at the moment of the
    // call. A path is on the drive when it begins with the text of drivePath(): "/mnt/DriveX/a" is
    // on the drive "/mnt/Drive", as "X/a".
    bool isTargetOnDrive() const;
    // Absolute paths: of the targeted folder; of the first selected item, else the targeted folder.
    NS::RefPtr<NS::String> pathFromTarget() const;
    NS::RefPtr<NS::String> pathFromSelectionOrTarget() const;
    // What follows drivePath() in an absolute path, "/" for the drive itself; nil for nil and for a
    // path that is not on the drive.
    NS::RefPtr<NS::String> relativePathFrom(const NS::RefPtr<NS::String>& path) const;
    // The drive-relative paths of the selected items that are on the drive, in order.
    NS::Ref<NS::Array> relativeSelectionArray() const;

    // Where the selection lies. kNone also for a mixed one; the Trash folder itself among the items
    // makes those before it forgotten.
    enum class TrashStatus : std::uint8_t { kNone = 0, kInTrash = 1, kOutsideTrash = 2 };
    TrashStatus trashStatusSelection() const;
    // True when a selected item is, or lies in, one of the drive's top-level folders "Trash" and
    // "Shared Folders". Raises NSRangeException when the drive itself is selected.
    bool isSpecialFolderSelected() const;

    // Tell the host which folder is shown: its drive-relative path, nil off the drive.
    void beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) override;
    void endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url) override;

    // The menu for what is selected and targeted now. The toolbar's has the host send the account
    // record, which the next one will show. Raises as isSpecialFolderSelected() does.
    NS::RefPtr<NS::Menu> menuForMenuKind(FI::MenuKind kind) override;
    // The line on the account's storage, disabled; nil without an account record.
    NS::RefPtr<NS::MenuItem> storageMenuItem() const;

    NS::RefPtr<NS::String> toolbarItemName() override;
    NS::RefPtr<NS::String> toolbarItemToolTip() override;
    NS::RefPtr<NS::Image> toolbarItemImage() override;

    // What the menus' entries call: each is one request to the host and waits for nothing. Sharing
    // and properties are of the first selected item, else the targeted folder; the folder that is
    // refreshed is always the targeted one; the others take the whole selection.
    void shareItem(NS::RefPtr<NS::Object> sender);
    void showProps();
    void refreshFolder();
    void moveToTrash();
    void restore();
    void delete_();
    void emptyTrash();

    // Shows the drive's folder in the user's file manager.
    void goToDrive();

    // Files carry no badges: does nothing.
    void requestBadgeIdentifierForURL(const NS::Ref<NS::URL>& url) override;

    // The latest account record, a QVUserInfoItem unless the host sent something else: it is kept
    // as it came. Nil until the first one arrives.
    NS_PROPERTY(NS::Object, storageInfo, setStorageInfo)
    // The link to the host; made by init() and never replaced.
    NS_PROPERTY(QVExtensionCommsClient, comms, setComms)
    // Where the drive is mounted, as the host sent it; nil until it does.
    NS_PROPERTY(NS::String, drivePath, setDrivePath)

  private:
    void registerHandlers();
    void waitForDrivePath();

    // What a menu depends on of the selection: what the operations above find, in one pass.
    struct SelectionTraits {
        TrashStatus trash;
        bool isSpecial;
    };
    SelectionTraits traitsOfSelection() const;

    void addToolbarEntries(NS::Menu& menu);
    void addContextualEntries(NS::Menu& menu, FI::MenuKind kind, std::size_t selected) const;
    NS::Ref<NS::String> emptyTrashTitle() const;
};
