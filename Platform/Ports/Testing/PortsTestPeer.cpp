// A peer in a process of its own, for the tests of ports.
//
//     PortsTestPeer echo NAME     registers NAME, prints "registered" or "taken", sends back each
//     message
//     PortsTestPeer goodbye NAME  the same, with a handler of its own for SIGABRT that is set first
//     and prints "goodbye"

#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/MachPort.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Termination.h"

#include <csignal>
#include <cstdio>
#include <string_view>
#include <unistd.h>

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

void sayGoodbye(int number) {
    constexpr std::string_view kText = "goodbye\n";
    (void)!::write(STDOUT_FILENO, kText.data(), kText.size());
    (void)std::signal(number, SIG_DFL);
    (void)std::raise(number);
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view mode(argc == 3 ? argv[1] : "");
    if (mode != "echo" && mode != "goodbye") {
        return 2;
    }
    if (mode == "goodbye") {
        (void)std::signal(SIGABRT, &sayGoodbye);
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
