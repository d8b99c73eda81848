#pragma once

#include "Shell/Client/ClientConnection.h"

#include <cstdint>
#include <string>

namespace Shell {

// Whether an extension is there that waits for its host, kept up to date. Asks the bus alone.
class WaitingExtension {
  public:
    // Begins to follow. The connection outlives it.
    explicit WaitingExtension(ClientConnection& connection);
    WaitingExtension(const WaitingExtension&) = delete;
    WaitingExtension& operator=(const WaitingExtension&) = delete;

    bool isThere() const noexcept { return isThere_; }
    // How often that has changed.
    std::uint64_t changes() const noexcept { return changes_; }
    // The bus has gone, and the extension with it.
    void busLost() noexcept { setThere(false); }

  private:
    struct Callbacks;

    void setThere(bool isThere) noexcept;

    bool isThere_ = false;
    std::uint64_t changes_ = 0;
};

} // namespace Shell
