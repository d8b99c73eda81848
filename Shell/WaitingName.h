#pragma once

#include <chrono>
#include <memory>

namespace Shell {

// Tells on the session bus that an extension is there that waits for its host: has the name
// FinderInterface::kWaitingName from its making to its release.
//
// An extension waits in its initialiser, where nobody serves a bus. So this connection is served by
// nobody: what it tells is who has the name, which the bus itself answers.
class WaitingName {
  public:
    static constexpr std::chrono::milliseconds kPatience{500};

    // Waits until the bus has the request, but not longer than that. Where there is no bus, or a
    // slower one, there is no name.
    explicit WaitingName(std::chrono::milliseconds patience = kPatience);
    // Releases it.
    ~WaitingName();
    WaitingName(const WaitingName&) = delete;
    WaitingName& operator=(const WaitingName&) = delete;

    // Does not wait. Releasing twice is releasing once.
    void release() noexcept;

  private:
    class Connection;
    std::unique_ptr<Connection> connection_;
};

} // namespace Shell
