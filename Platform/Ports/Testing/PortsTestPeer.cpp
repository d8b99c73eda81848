// A peer in a process of its own, for the tests of ports.
//
//     PortsTestPeer echo NAME     registers NAME, prints "registered" or "taken", sends back each
//     message

#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/MachPort.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Termination.h"

#include <cstdio>
#include <string_view>

namespace {

class Echo final : public NS::MachPortDelegate {
  public:
    explicit Echo(NS::Ref<NS::MachPort> port) : port_(std::move(port)) {}

    void handlePortMessage(const NS::Ref<NS::PortMessage>& message) override {
        if (message->sendPort()) {
            (void)message->sendPort()->sendBeforeDate_components_from_reserved(
                NS::Date::date(), *message->components(), port_, 0);
        }
    }

  private:
    NS::Ref<NS::MachPort> port_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3 || std::string_view(argv[1]) != "echo") {
        return 2;
    }
    NS::removeNamesOnTermination();
    const auto port = NS::MachPort::port();
    const auto echo = NS::make<Echo>(port);
    port->setDelegate(echo.get());
    NS::RunLoop::currentRunLoop()->addPort_forMode(port, NS::RunLoopMode::kDefault);
    const bool registered =
        NS::MachBootstrapServer::sharedInstance()->registerPort_name(port, *NS::str(argv[2]));
    std::puts(registered ? "registered" : "taken");
    (void)std::fflush(stdout);
    NS::RunLoop::currentRunLoop()->run();
}
