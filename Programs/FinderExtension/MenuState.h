#pragma once

#include "QVFinderExtension/FinderSync.h"

#include <optional>
#include <string>
#include <vector>

// What the extension's menus depend on besides the selection and the target, each the same object
// until a menu would be another. The host sends the account record anew for each of the toolbar's
// menus: were an equal record another one, every file manager would ask for its menus again, which
// would bring the next record. Main thread.
class MenuState {
  public:
    explicit MenuState(NS::Ref<FinderSync> extension) : extension_(std::move(extension)) {}

    // The drive's path and the record. Quick while both stay as they are.
    std::vector<NS::RefPtr<NS::Object>> operator()();

  private:
    const NS::RefPtr<NS::Object>& shownRecord();

    NS::Ref<FinderSync> extension_;
    NS::RefPtr<NS::Object> latest_;
    NS::RefPtr<NS::Object> shown_;
    std::optional<std::string> texts_ = ""; // what menus show of it; none when they cannot
};
