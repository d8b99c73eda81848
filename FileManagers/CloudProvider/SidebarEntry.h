#pragma once

#include "FileManagers/CloudProvider/Account.h"
#include "FileManagers/CloudProvider/MenuReads.h"
#include "FileManagers/CloudProvider/Notifications.h"

#include <optional>
#include <string>

namespace FileManagers {

// The drive in the sidebars of GNOME, over org.freedesktop.CloudProviders: a line with its menu
// while its extension is there, none otherwise.
//
// File managers ask this process and wait for nothing; the drive's own waiting happens here. Main
// thread of GLib.
class SidebarEntry {
  public:
    static constexpr const char* kBusName = "com.Quorvane.Quorvane.CloudProvider";
    static constexpr const char* kObject = "/com/Quorvane/Quorvane/CloudProvider";

    // Puts the provider on a bus, and takes over what the drive tells; both outlive it. To be found
    // it needs the name, which is the caller's to take.
    SidebarEntry(Drive& drive, GDBusConnection* bus);
    ~SidebarEntry();
    SidebarEntry(const SidebarEntry&) = delete;
    SidebarEntry& operator=(const SidebarEntry&) = delete;

  private:
    void refresh(Look look);
    void show(const AccountState& state);
    void pick(const Shell::MenuEntry& entry);

    Drive& drive_;
    CloudProvidersProviderExporter* provider_; // not ours to end, see Account
    EntriesModel menu_;
    MenuReads reads_;
    Notifications notifications_;
    std::optional<Account> account_;
    std::string folder_; // of the account
    unsigned accounts_ = 0;
};

} // namespace FileManagers
