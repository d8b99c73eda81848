#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Platform/Foundation/Property.h"
#include "QVApi/Content/QVUserInfoItem.h"
#include "QVFinderExtension/QVExtensionCommsClient.h"

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
};
