#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/MachPort.h"
#include "Platform/Ports/PortDrops.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Testing/PumpUntil.h"
#include "Tests/Support/PrivateFolders.h"
#include "Tests/Support/Process.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Tests {

// Keeps what a port received; may act on it.
class Collector final : public NS::MachPortDelegate {
  public:
    void handlePortMessage(const NS::Ref<NS::PortMessage>& message) override {
        messages.push_back(message);
        if (onMessage) {
            onMessage(*message);
        }
    }

    std::string text(std::size_t message, std::size_t component = 0) const {
        const auto& components = messages[message]->components();
        const auto data = NS::cast<NS::Data>(components->objectAtIndex(component));
        return std::string(NS::charactersOf(data->bytes()));
    }

    std::vector<NS::Ref<NS::PortMessage>> messages;
    std::function<void(const NS::PortMessage&)> onMessage;
};

// A port of this process with its collector, served by the run loop while it lives.
class TestPort {
  public:
    explicit TestPort(bool scheduled = true) {
        port->setDelegate(collector.get());
        if (scheduled) {
            schedule();
        }
    }
    ~TestPort() { end(); }
    TestPort(const TestPort&) = delete;
    TestPort& operator=(const TestPort&) = delete;

    void schedule() {
        NS::RunLoop::currentRunLoop()->addPort_forMode(port, NS::RunLoopMode::kDefault);
    }
    void unschedule() {
        NS::RunLoop::currentRunLoop()->removePort_forMode(port, NS::RunLoopMode::kDefault);
    }
    // Lets the port go, with a fresh one in its place.
    void end() {
        unschedule();
        port->setDelegate(nullptr);
        port = NS::MachPort::port();
    }

    NS::Ref<NS::MachPort> port = NS::MachPort::port();
    NS::Ref<Collector> collector = NS::make<Collector>();
};

class PortTest : public FolderTest {
  protected:
    static NS::Ref<NS::Array> components(const std::vector<std::string>& texts) {
        const auto list = NS::make<NS::MutableArray>();
        for (const std::string& text : texts) {
            list->addObject(NS::Data::dataWithBytes(NS::bytesOf(text)));
        }
        return list;
    }
    static bool send(const NS::RefPtr<NS::MachPort>& to, const std::vector<std::string>& texts,
                     const NS::RefPtr<NS::MachPort>& from = nullptr) {
        return to->sendBeforeDate_components_from_reserved(NS::Date::date(), *components(texts),
                                                           from, 0);
    }
    static bool registerPort(const TestPort& port, std::string_view name) {
        return names()->registerPort_name(port.port, *NS::str(name));
    }
    static NS::RefPtr<NS::MachPort> lookUp(std::string_view name) {
        return names()->portForName(*NS::str(name));
    }
    static NS::Ref<NS::MachBootstrapServer> names() {
        return NS::MachBootstrapServer::sharedInstance();
    }
    static bool pump(const std::function<bool()>& condition) { return NS::pumpUntil(condition); }
    static void serveAll() {
        while (NS::RunLoop::currentRunLoop()->serveReady()) {
        }
    }

    Process startPeer(const std::string& name, const std::string& file = "peer",
                      const std::string& mode = "echo") {
        return {
            PEER_PROGRAM,
            {mode, name},
            folders.root() / (file + ".out"),
            folders.root() / (file + ".err")
        };
    }
    static bool says(const Process& peer, const std::string& text) {
        return waitUntil([&] { return peer.output() == text + "\n"; });
    }
    std::filesystem::path folder() const { return folders.runtime() / "Quorvane"; }
};

} // namespace Tests
