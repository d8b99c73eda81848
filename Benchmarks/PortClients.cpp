#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/Transport.h"
#include "Benchmarks/linux/RawBroadcast.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/QVExtensionActions.h"

#include <stdexcept>
#include <vector>

namespace Benchmarks {

namespace {

class Counter final : public NS::MachPortDelegate {
  public:
    void handlePortMessage(const NS::Ref<NS::PortMessage>&) override { ++count; }

    std::size_t count = 0;
};

// A port that has announced itself to the server.
NS::Ref<NS::MachPort> client(NS::MachPortDelegate& delegate) {
    const auto own = NS::MachPort::port();
    own->setDelegate(&delegate);
    NS::RunLoop::currentRunLoop()->addPort_forMode(own, NS::RunLoopMode::kDefault);
    const auto server =
        NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str(kServerPortName));
    const auto message = NS::Array::arrayWithObjects(
        {NS::Data::dataWithBytes(NS::bytesOf(QVExtensionAction::kAlive))});
    if (!server ||
        !server->sendBeforeDate_components_from_reserved(NS::Date::date(), message, own, 0)) {
        throw std::runtime_error("the server is not there");
    }
    return own;
}

void servePortClients(const std::filesystem::path&, std::size_t count) {
    allowManyDescriptors();
    const auto counter = NS::make<Counter>();
    std::vector<NS::Ref<NS::MachPort>> clients;
    while (clients.size() < count) {
        clients.push_back(client(counter));
    }
    Peer::sayReady();
    const auto forEver = NS::Date::distantFuture();
    while (Peer::awaitOrder()) {
        while (counter->count < count * kBroadcastsAtOnce) {
            (void)NS::RunLoop::currentRunLoop()->runMode_beforeDate(NS::RunLoopMode::kDefault,
                                                                    *forEver);
        }
        counter->count = 0;
        Peer::sayReady();
    }
}

} // namespace

const TransportKind kPortClients{"port-clients", nullptr, &servePortClients};

} // namespace Benchmarks
