#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Ports/RunLoopSource.h"
#include "Platform/Ports/linux/RuntimeFolder.h"

#include <string_view>

namespace NS {

class LocalEndpoint;

// A socket of the run-time folder on which peers come in to a port.
class Listener final : public RunLoopSource {
    NS_OBJECT(Listener)
  public:
    // Binds a new socket of that name; nil when the system refuses it.
    static RefPtr<Listener> listenOn(const RuntimeFolder& folder, std::string_view socketName,
                                     LocalEndpoint& owner);

    // Takes in every peer that is waiting.
    void acceptAll();
    // Called by the owner when it goes.
    void forgetOwner() noexcept { owner_ = nullptr; }

    int descriptor() const noexcept override { return socket_.get(); }
    void ready() override;

    Listener(FileDescriptor socket, LocalEndpoint& owner) noexcept;

  private:
    // Takes one peer in; false when none is waiting.
    bool acceptOne();

    FileDescriptor socket_;
    LocalEndpoint* owner_;
};

} // namespace NS
