#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Object.h"

#include <cstdint>

namespace NS {

class MachPort;

// A message as it arrived: components in order and, if the sender gave one, a port to answer to.
class PortMessage final : public Object {
    NS_OBJECT(PortMessage)
  public:
    PortMessage(RefPtr<MachPort> sendPort, Ref<Array> components);

    // The sender's reply port, or nil.
    const RefPtr<MachPort>& sendPort() const noexcept { return sendPort_; }
    // Data objects, in the order in which they were sent.
    const Ref<Array>& components() const noexcept { return components_; }
    // Not used by any sender: always 0.
    std::uint32_t msgid() const noexcept { return 0; }

  private:
    RefPtr<MachPort> sendPort_;
    Ref<Array> components_;
};

} // namespace NS
