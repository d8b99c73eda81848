#pragma once

#include "Platform/Foundation/Object.h"
#include "Programs/QuorvaneHost/DriveTree.h"
#include "Programs/QuorvaneHost/Journal.h"
#include "Programs/QuorvaneHost/ObservedFolders.h"
#include "Programs/QuorvaneHost/ShareLinks.h"
#include "Programs/QuorvaneHost/Trash.h"

#include <string>
#include <string_view>
#include <vector>

// What extensions ask for, done on the drive's files. Each request leaves a line in the journal for
// every item: what was done, or why it was refused. Arguments are taken as they came over the link.
class DriveRequests {
  public:
    // The journal outlives it. Throws Refusal when the drive or the data folder cannot be used, or
    // another host uses the latter.
    DriveRequests(const std::string& drivePath, const std::string& dataFolder, Journal& journal);
    DriveRequests(const DriveRequests&) = delete;
    DriveRequests& operator=(const DriveRequests&) = delete;

    void share(const NS::RefPtr<NS::Object>& path);
    void showProps(const NS::RefPtr<NS::Object>& path);
    void refreshFolder(const NS::RefPtr<NS::Object>& path);

    // True when something on the drive has changed.
    bool moveToTrash(const NS::RefPtr<NS::Object>& paths);
    bool restore(const NS::RefPtr<NS::Object>& paths);
    bool remove(const NS::RefPtr<NS::Object>& paths);
    bool emptyTrash();

    // The client is known by its port's description.
    void beginObserving(const NS::RefPtr<NS::Object>& path, const std::string& client);
    void endObserving(const NS::RefPtr<NS::Object>& path, const std::string& client);
    void clientGone(const std::string& client);

  private:
    template <class Do>
    void onItem(std::string_view action, const NS::RefPtr<NS::Object>& path, Do&& perform);
    template <class Do>
    bool onItems(std::string_view action, const NS::RefPtr<NS::Object>& paths, Do&& perform);
    // The paths of a list; what is none of them is refused by itself, the others go on.
    std::vector<std::string> pathsFrom(std::string_view action,
                                       const NS::RefPtr<NS::Object>& paths);
    bool note(std::string_view action, const Trash::Results& results);
    nlohmann::ordered_json observedJson(const std::string& client) const;

    Journal& journal_;
    NS::FileDescriptor lock_;
    DriveTree tree_;
    Trash trash_;
    ShareLinks links_;
    ObservedFolders observed_;
};
