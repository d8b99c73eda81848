#pragma once

#include "Shell/Client/ClientConnection.h"
#include "Shell/Client/FinderClient.h"
#include "Shell/Client/FollowedName.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Shell {

// What the extension says of itself on the bus, kept up to date: who it is, what it watches, its
// toolbar item and its generation. Asks for nobody to be started.
class FollowedExtension {
  public:
    // Begins to follow. The connection outlives it.
    explicit FollowedExtension(ClientConnection& connection);
    FollowedExtension(const FollowedExtension&) = delete;
    FollowedExtension& operator=(const FollowedExtension&) = delete;

    // Whether it is known who is there, and what that one says.
    bool isKnown() const noexcept;
    bool isPresent() const noexcept { return isPresent_; }
    // Its unique name on the bus; empty while there is none.
    const std::string& owner() const noexcept { return name_.owner(); }

    // Whether it has taken in messages since it was doubted last. To doubt it is to ask it just
    // that, without waiting, and once until it has answered.
    bool isAnswering() const noexcept { return !doubt_; }
    void doubt();

    // As the extension spells them, without slashes at the end.
    const std::vector<std::string>& watchedFolders() const noexcept { return watchedFolders_; }
    const ToolbarItem& toolbarItem() const noexcept { return toolbarItem_; }
    bool hostAnswers() const noexcept { return hostAnswers_; }
    // Counted here: an extension that is started again begins with 1 again.
    std::uint64_t generation() const noexcept { return isPresent_ ? generation_ : 0; }

    // How often what is known has changed.
    std::uint64_t changes() const noexcept { return changes_; }
    // The bus has gone, and the extension with it.
    void busLost() { name_.busLost(); }

  private:
    struct Callbacks;

    void ownerChanged();
    void askForProperties();
    void takeAll(sd_bus_message* reply);
    void noteChange() noexcept;
    int takeProperties(sd_bus_message* message);
    int takeProperty(sd_bus_message* message);
    int takeWatchedFolders(sd_bus_message* message);

    ClientConnection& connection_;
    FollowedName name_;
    bool hasAnswered_ = false;
    bool isPresent_ = false;
    BusSlot properties_; // the question that is under way
    BusSlot doubt_;      // the same, whether it answers
    std::vector<std::string> watchedFolders_;
    ToolbarItem toolbarItem_;
    bool hostAnswers_ = true; // also of one that does not say
    std::uint64_t generation_ = 0;
    std::uint64_t changes_ = 0;
};

} // namespace Shell
