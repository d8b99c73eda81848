#pragma once

#include "Shell/Client/ClientConnection.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Shell {

// Who has a name on the bus, kept up to date. Asks the bus alone, so that nobody is started.
class FollowedName {
  public:
    // Begins to follow. The connection outlives it. What changes is told when messages are handled:
    // each owner and end of one, and once that nobody has the name.
    FollowedName(ClientConnection& connection, const char* name,
                 std::function<void()> onChange = {});
    FollowedName(const FollowedName&) = delete;
    FollowedName& operator=(const FollowedName&) = delete;

    // Whether the bus has told, or has gone.
    bool isKnown() const noexcept { return isKnown_; }
    // Its unique name; empty while there is none.
    const std::string& owner() const noexcept { return owner_; }
    // How often the owner has changed.
    std::uint64_t changes() const noexcept { return changes_; }
    // The bus has gone, and the owner with it.
    void busLost() { setOwner(""); }

  private:
    struct Callbacks;

    void setOwner(const char* owner);

    bool isKnown_ = false;
    std::string owner_;
    std::uint64_t changes_ = 0;
    std::function<void()> onChange_;
};

} // namespace Shell
