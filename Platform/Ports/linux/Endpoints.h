#pragma once

#include "Platform/Ports/MachPort.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/linux/Connection.h"
#include "Platform/Ports/linux/Listener.h"
#include "Platform/Ports/linux/PortIdentity.h"

#include <memory>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace NS {

// What a MachPort is made of: one kind for a port of this process, one for a port of another.
class MachPort::Endpoint {
  public:
    virtual ~Endpoint() = default;
    Endpoint(const Endpoint&) = delete;
    Endpoint& operator=(const Endpoint&) = delete;

    const PortIdentity& identity() const noexcept { return identity_; }
    pid_t process() const noexcept { return process_; }

    virtual bool send(const Array& components, const RefPtr<MachPort>& from) = 0;
    virtual bool isValid() const = 0;
    // Null for a port of another process.
    virtual LocalEndpoint* local() noexcept { return nullptr; }

  protected:
    Endpoint(const PortIdentity& identity, pid_t process) noexcept
        : identity_(identity), process_(process) {}

  private:
    PortIdentity identity_;
    // Beside the identity, since that is only what the peer says of itself.
    pid_t process_;
};

class Registration;

// A port of this process: what it listens on, who is connected to it, and who gets the messages.
class LocalEndpoint final : public MachPort::Endpoint {
  public:
    LocalEndpoint();
    ~LocalEndpoint() override;

    bool send(const Array& components, const RefPtr<MachPort>& from) override;
    bool isValid() const override { return true; }
    LocalEndpoint* local() noexcept override { return this; }

    // The port that this is the inside of.
    void setPort(MachPort& port) noexcept { port_ = &port; }
    MachPortDelegate* delegate() const noexcept { return delegate_; }
    void setDelegate(MachPortDelegate* delegate) noexcept { delegate_ = delegate; }

    // The loop that serves the port, null for none. The loop keeps the port, not the other way
    // round.
    void setRunLoop(RunLoop* loop);
    bool isScheduled() const noexcept { return loop_ != nullptr; }

    // A connection's messages arrive here from now on, or no more. False, with the drop noted, when
    // there are too many.
    bool attach(const Ref<Connection>& connection);
    void detach(const Connection& connection);
    // An open connection between this port and another, if there is one.
    RefPtr<Connection> connectionTo(const Endpoint& peer) const;

    // A name of the port; belongs to it from now on.
    void addRegistration(std::unique_ptr<Registration> registration);
    // Gives up a name that a port of this process holds; on that port's thread. Who has connected
    // stays connected.
    static bool removeName(std::string_view name);

    // Hands a message to the delegate.
    void deliver(const Ref<PortMessage>& message);

  private:
    bool removeRegistration(std::string_view name);
    void serve(RunLoopSource& source);
    void stopServing(RunLoopSource& source);
    RefPtr<Connection> loopbackFrom(LocalEndpoint* sender);

    MachPort* port_ = nullptr;
    MachPortDelegate* delegate_ = nullptr;
    RunLoop* loop_ = nullptr;
    std::vector<std::unique_ptr<Registration>> registrations_;
    std::vector<Ref<Connection>> connections_;
    // The way of messages of this process that ask for no answer.
    RefPtr<Connection> loopback_;
};

// A port of another process, or of this one found by its name.
class RemoteEndpoint final : public MachPort::Endpoint {
  public:
    RemoteEndpoint(const PortIdentity& identity, Ref<Connection> connection) noexcept;

    bool send(const Array& components, const RefPtr<MachPort>& from) override;
    // The connection pins the very process that was found.
    bool isValid() const override { return connection_->isOpen(); }

  private:
    RefPtr<Connection> connectionFor(LocalEndpoint& receiver);

    Ref<Connection> connection_;
};

} // namespace NS
