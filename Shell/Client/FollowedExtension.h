#pragma once

#include "Shell/Client/ClientConnection.h"
#include "Shell/Client/FinderClient.h"
#include "Shell/Client/WatchedFolders.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Shell {

// What the extension says of itself on the bus, kept up to date: who it is, what it watches, its
// toolbar item and its generation.
class FollowedExtension {
  public:
    // Begins to follow. The connection outlives it.
    explicit FollowedExtension(ClientConnection& connection);
    FollowedExtension(const FollowedExtension&) = delete;
    FollowedExtension& operator=(const FollowedExtension&) = delete;

    // Whether it is known who is there, and what that one says.
    bool isKnown() const noexcept;
    bool isPresent() const noexcept { return isPresent_ && connection_.bus() != nullptr; }
    // Its unique name on the bus; empty while there is none.
    const std::string& owner() const noexcept { return owner_; }

    const WatchedFolders& watched() const noexcept { return watched_; }
    const ToolbarItem& toolbarItem() const noexcept { return toolbarItem_; }
    std::uint64_t generation() const noexcept { return generation_; }

    // How often what is known has changed.
    std::uint64_t changes() const noexcept { return changes_; }

  private:
    struct Callbacks;

    void setOwner(const char* owner);
    void askForProperties();
    void takeAll(sd_bus_message* reply);
    int takeProperties(sd_bus_message* message);
    int takeProperty(sd_bus_message* message);
    int takeWatchedFolders(sd_bus_message* message);

    ClientConnection& connection_;
    std::string owner_;
    bool isOwnerKnown_ = false;
    bool isPresent_ = false;
    BusSlot properties_; // the question that is under way
    WatchedFolders watched_;
    ToolbarItem toolbarItem_;
    std::uint64_t generation_ = 0;
    std::uint64_t changes_ = 0;
};

} // namespace Shell
