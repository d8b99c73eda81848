#pragma once

#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <string>

namespace Tests {

// A session bus of the test's own, where DBUS_SESSION_BUS_ADDRESS says. It starts no services. Made
// after the test's PrivateFolders; goes with this object.
class SessionBus {
  public:
    // Returns when programs can connect. Throws when the bus does not come up.
    explicit SessionBus(const PrivateFolders& folders);

    // To stop it, continue it or kill it.
    Process& daemon() noexcept { return daemon_; }

  private:
    Process daemon_;
};

// A test with private folders and a session bus in them.
class SessionBusTest : public FolderTest {
  protected:
    SessionBus bus{folders};
};

} // namespace Tests
