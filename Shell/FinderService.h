#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Shell/PublishedState.h"

#include <functional>
#include <memory>

namespace Shell {

// Serves an extension to the file managers on the session bus, as Docs/finder-bus.md describes,
// from the run loop of the thread that starts it.
//
// Never waits for the bus. Without one, and when it goes, the extension works on: its link to the
// host does not need it. What the extension raises in a call reaches the caller as an error and
// then leaves the run loop's turn, as what the platform itself calls would.
class FinderService {
  public:
    // The menu state and the host are looked at before each wait of the run loop, and so must be
    // quick.
    FinderService(NS::Ref<FI::FinderSync> extension, MenuState state, Host host = {});
    // Leaves the bus and the run loop.
    ~FinderService();
    FinderService(const FinderService&) = delete;
    FinderService& operator=(const FinderService&) = delete;

    // Shows the extension on the bus, then asks for its name, behind another process that has it.
    // False, and a line on the console log, when there is no bus. Calls back, from the loop, once
    // the bus has given the name or a place in the queue for it. Call once.
    bool start(std::function<void()> onNamed = nullptr);

  private:
    class Server;
    std::unique_ptr<Server> server_;
};

} // namespace Shell
