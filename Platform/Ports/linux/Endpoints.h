#pragma once

#include "Platform/Ports/MachPort.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/linux/Connection.h"
#include "Platform/Ports/linux/Listener.h"
#include "Platform/Ports/linux/PortIdentity.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace NS {

// What a MachPort is made of: one for a port of this process, one for a port of another.
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

    // A connection's messages arrive here from now on, or no more. False when there are too many.
    bool attach(const Ref<Connection>& connection);
    void detach(const Connection& connection);

    // A name's listening socket; belongs to the port from now on.
    void addRegistration(std::unique_ptr<Registration> registration);
    // Gives up a name that any port of this process holds.
    static bool removeName(std::string_view name);

    // Hands a message to the delegate.
    void deliver(const Ref<PortMessage>& message);

  private:
    bool removeRegistration(std::string_view name);
    RefPtr<Connection> loopbackFor(const RefPtr<MachPort>& from);

    MachPort* port_ = nullptr;
    MachPortDelegate* delegate_ = nullptr;
    RunLoop* loop_ = nullptr;
    std::vector<std::unique_ptr<Registration>> registrations_;
    std::vector<Ref<Connection>> connections_;
    // Messages of this process to its own port, by the port that they are to be answered to.
    std::vector<std::pair<PortIdentity, Ref<Connection>>> loopbacks_;
};

// A port of another process, or of this one found by its name.
class RemoteEndpoint final : public MachPort::Endpoint {
  public:
    // A port that came with a message, or was looked up.
    RemoteEndpoint(const PortIdentity& identity, Ref<Connection> connection);
    // The same with the socket that further connections can be made to.
    RemoteEndpoint(const PortIdentity& identity, Ref<Connection> connection, RuntimeFolder folder,
                   std::string socketName);
    ~RemoteEndpoint() override;

    bool send(const Array& components, const RefPtr<MachPort>& from) override;
    // The first connection pins the very process that was found.
    bool isValid() const override { return connection_->isOpen(); }

  private:
    RefPtr<Connection> connectionFor(LocalEndpoint& receiver);

    Ref<Connection> connection_;
    // One more for each further port of this process that wants its answers.
    std::vector<Ref<Connection>> others_;
    std::optional<RuntimeFolder> folder_;
    std::string socketName_;
};

} // namespace NS
