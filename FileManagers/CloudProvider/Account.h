#pragma once

#include "FileManagers/CloudProvider/AccountState.h"
#include "FileManagers/CloudProvider/EntriesModel.h"
#include "FileManagers/GLib/Owned.h"

#include <string>

#include <cloudproviders.h>

namespace FileManagers {

// The drive as an account of a provider on the bus: a line in sidebars, for as long as this object
// lives. Main thread of GLib.
class Account {
  public:
    // The provider has to stay for ever: the library's list of its accounts still holds those that
    // were removed, and lets go of them once more at the provider's end.
    //
    // The id is the last part of its object's path: letters, digits and "_", and another one for
    // each account of a provider. The menu outlives it.
    Account(CloudProvidersProviderExporter* provider, const std::string& id,
            const EntriesModel& menu);
    ~Account();
    Account(const Account&) = delete;
    Account& operator=(const Account&) = delete;

    // Shows all but the entries, which are the menu's. A sidebar's line keeps its first folder and
    // icon: for others there has to be another account.
    void show(const AccountState& state);

  private:
    static gboolean complete(gpointer self);

    CloudProvidersProviderExporter* provider_;
    OwnedObject<CloudProvidersAccountExporter> account_;
    CloudProvidersAccountStatus status_ = CLOUD_PROVIDERS_ACCOUNT_STATUS_INVALID;
    unsigned completion_ = 0;
};

// The path of a folder as sidebars need it, which put "file://" before it and take that for a URI:
// what would mean something else there is percent-encoded, and what is no text.
std::string accountPath(const std::string& folder);

} // namespace FileManagers
