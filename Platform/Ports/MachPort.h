#pragma once

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Ports/PortMessage.h"

#include <memory>

namespace NS {

class RunLoop;

// Receives the messages of a port. Kept alive while it handles one; the port itself does not keep
// it.
class MachPortDelegate : public Object {
    NS_OBJECT(MachPortDelegate)
  public:
    virtual void handlePortMessage(const Ref<PortMessage>& message) = 0;
};

// A place to which messages are sent: one of this process, made with port(), or one of another that
// was looked up by name or came with a message.
//
// Messages go out at once or not at all, and arrive whole and in order per sender. Ports of the
// same peer compare equal. A port of another process becomes invalid when that process ends or
// gives the port up, also when nothing is ever sent to it, and stays so even when a new process
// takes its name. Use on the thread whose run loop it is scheduled in.
class MachPort final : public Object {
    NS_OBJECT(MachPort)
  public:
    // A fresh port of this process, without a name.
    static Ref<MachPort> port();
    ~MachPort() override;

    // Who receives the messages of a port of this process, or null. The delegate must take itself
    // out before it goes.
    void setDelegate(MachPortDelegate* delegate) noexcept;
    MachPortDelegate* delegate() const noexcept;

    // Queues one message on this port: components are Data objects, `from` is the port to answer to
    // or nil. Never blocks; the limit date is always taken as passed. False when the message was
    // not queued: the queue is full, the port is invalid, or the message is beyond PortLimits.
    bool sendBeforeDate_components_from_reserved(const Date& limit, const Array& components,
                                                 const RefPtr<MachPort>& from,
                                                 std::size_t reserved);

    // Asks the kernel; never stale.
    bool isValid() const;

    // By peer, not by object.
    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // "<NSMachPort: 0x…>" with the first part of the peer's identity behind it.
    Ref<String> description() const override;

    // The implementation, for this folder only.
    class Endpoint;
    explicit MachPort(std::unique_ptr<Endpoint> endpoint) noexcept;
    Endpoint& endpoint() const noexcept { return *endpoint_; }

  private:
    std::unique_ptr<Endpoint> endpoint_;
};

} // namespace NS
