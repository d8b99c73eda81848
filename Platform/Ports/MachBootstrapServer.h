#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"
#include "Platform/Ports/MachPort.h"

namespace NS {

// Where ports of this user's processes are found by name. There is no server behind it: names are
// entries of a private folder, held by their owners' processes.
class MachBootstrapServer final : public Object {
    NS_OBJECT(MachBootstrapServer)
  public:
    static Ref<MachBootstrapServer> sharedInstance();

    // Makes a port of this process known under a name, at most 200 bytes of UTF-8 without "/".
    // False when a live process, this one included, holds the name or the folder cannot be used. A
    // name left behind by a dead process is taken over. The name is given up when the port goes.
    bool registerPort_name(const Ref<MachPort>& port, const String& name);
    // The port of a name, or nil when no live process holds it. Never blocks.
    RefPtr<MachPort> portForName(const String& name);
    // Gives up a name that this process registered; false for any other.
    bool removePortForName(const String& name);
};

} // namespace NS
