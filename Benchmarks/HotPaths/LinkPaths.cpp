// Messages. Both ends are in this process; the time that the kernel takes is not ours to count.

#include "Benchmarks/HotPaths/HotPaths.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/QVExtensionActions.h"
#include "QVFinderExtension/QVExtensionCommsClient.h"
#include "QVFinderExtension/QVExtensionCommsServer.h"

#include <vector>

namespace HotPaths {

namespace {

constexpr int kMessages = 64;
constexpr int kClients = 10;

// Counts what arrives, by whichever way.
class Receiver final : public NS::MachPortDelegate {
    NS_OBJECT(Receiver)
  public:
    void handlePortMessage(const NS::Ref<NS::PortMessage>&) override { ++count; }
    void share(NS::RefPtr<NS::String>) { ++count; }

    int count = 0;
};

constexpr NS::Method kMethods[] = {
    NS::method<&Receiver::share>("share:"),
};

constinit const NS::Class Receiver::kClass{
    .name = "HotPathReceiver", .superclass = &NS::MachPortDelegate::kClass, .methods = kMethods};

void serve(Receiver& receiver, int expected) {
    while (NS::RunLoop::currentRunLoop()->serveReady()) {
    }
    if (receiver.count != expected) {
        NS::Exception::raise(NS::kGenericException, "a message was lost");
    }
    receiver.count = 0;
}

NS::Ref<NS::MachPort> portOf(Receiver& receiver) {
    const auto port = NS::MachPort::port();
    port->setDelegate(&receiver);
    NS::RunLoop::currentRunLoop()->addPort_forMode(port, NS::RunLoopMode::kDefault);
    return port;
}

NS::Ref<NS::MachPort> portNamed(std::string_view name) {
    return NS::Ref<NS::MachPort>(
        *NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str(name)));
}

NS::Ref<NS::Object> archiveOfPath() {
    return NS::Data::dataWithVector(std::vector<std::byte>(250));
}

void countPort() {
    const auto receiver = NS::make<Receiver>();
    const auto own = portOf(receiver);
    const auto sender = NS::MachPort::port();
    (void)NS::MachBootstrapServer::sharedInstance()->registerPort_name(own, *NS::str("port"));
    const auto found = portNamed("port");
    const auto message = NS::Array::arrayWithObjects(
        {NS::Data::dataWithBytes(NS::bytesOf("ext_share")), archiveOfPath()});
    const auto send = [&] {
        for (int i = 0; i < kMessages; ++i) {
            (void)found->sendBeforeDate_components_from_reserved(NS::Date::date(), message, sender,
                                                                 0);
        }
    };
    count("port-send", send);
    serve(receiver, 2 * kMessages);
    count("port-exchange", [&] {
        send();
        serve(receiver, kMessages);
    });
    NS::RunLoop::currentRunLoop()->removePort_forMode(own, NS::RunLoopMode::kDefault);
}

void countLinkOf(QVExtensionCommsServer& server) {
    const auto receiver = NS::make<Receiver>();
    const auto client = QVExtensionCommsClient::new_();
    const auto path = NS::str("/Documents/Holiday pictures/Summer at the lake/Picture 17.jpeg");
    server.setTarget_selector_for(receiver, {"share:"}, NS::str(QVExtensionAction::kShare));
    serve(receiver, 0);
    count("link-archived-path", [&] {
        for (int i = 0; i < kMessages; ++i) {
            client->share(path);
        }
        serve(receiver, kMessages);
    });
    NS::RunLoop::currentRunLoop()->removePort_forMode(NS::Ref<NS::MachPort>(*client->port()),
                                                      NS::RunLoopMode::kDefault);
}

void countBroadcast(QVExtensionCommsServer& server) {
    const auto receiver = NS::make<Receiver>();
    std::vector<NS::Ref<NS::MachPort>> clients;
    const auto alive = NS::Array::arrayWithObjects(
        {NS::Data::dataWithBytes(NS::bytesOf(QVExtensionAction::kAlive))});
    for (int i = 0; i < kClients; ++i) {
        clients.push_back(portOf(receiver));
        (void)portNamed(kServerPortName)
            ->sendBeforeDate_components_from_reserved(NS::Date::date(), alive, clients.back(), 0);
    }
    serve(receiver, 0);
    const auto payload = NS::Array::arrayWithObjects({archiveOfPath()});
    count("broadcast",
          [&] { server.broadcastAction_data(NS::str(QVExtensionAction::kUserInfo), payload); });
    serve(receiver, 2 * kClients);
    for (const auto& port : clients) {
        NS::RunLoop::currentRunLoop()->removePort_forMode(port, NS::RunLoopMode::kDefault);
    }
}

} // namespace

void countLink() {
    countPort();
    const auto server = QVExtensionCommsServer::defaultServer();
    countBroadcast(server);
    countLinkOf(server);
}

} // namespace HotPaths
