#pragma once

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Ports/RunLoop.h"
#include "Platform/Ports/Testing/PumpUntil.h"
#include "QVFinderExtension/QVExtensionActions.h"
#include "QVFinderExtension/QVExtensionCommsClient.h"
#include "QVFinderExtension/QVExtensionCommsServer.h"
#include "Tests/Support/PrivateFolders.h"

#include <vector>

namespace Tests {

// Handlers that remember what they were called with.
class LinkRecorder final : public NS::Object {
    NS_OBJECT(LinkRecorder)
  public:
    void nothing() { ++calls; }
    void received(NS::RefPtr<NS::Object> object) {
        ++calls;
        objects.push_back(object);
    }
    void receivedFrom(NS::RefPtr<NS::Object> object, NS::RefPtr<NS::MachPort> port) {
        received(object);
        ports.push_back(port);
    }
    void receivedPort(NS::RefPtr<NS::MachPort> port) {
        ++calls;
        ports.push_back(port);
    }

    static constexpr NS::Selector kNothing{"nothing"};
    static constexpr NS::Selector kReceived{"received:"};
    static constexpr NS::Selector kReceivedFrom{"received:from:"};
    static constexpr NS::Selector kReceivedPort{"receivedPort:"};

    int calls = 0;
    std::vector<NS::RefPtr<NS::Object>> objects;
    std::vector<NS::RefPtr<NS::MachPort>> ports;
};

// Two ends of the link in one process, on one run loop.
class LinkTest : public FolderTest {
  protected:
    static NS::Ref<NS::Data> archived(const NS::RefPtr<NS::Object>& object) {
        return NS::KeyedArchiver::archivedDataWithRootObject(object);
    }
    static NS::Ref<NS::Array> payload(std::initializer_list<NS::Ref<NS::Object>> components) {
        return NS::Array::arrayWithObjects(components);
    }
    static NS::Ref<NS::Object> bytes(std::string_view text) {
        return NS::Data::dataWithBytes(NS::bytesOf(text));
    }
    // Takes an endpoint's port out of the run loop, which else keeps it alive.
    static void unschedule(const QVExtensionCommsComponent& endpoint) {
        NS::RunLoop::currentRunLoop()->removePort_forMode(NS::Ref<NS::MachPort>(*endpoint.port()),
                                                          NS::RunLoopMode::kDefault);
    }
    static bool pump(const std::function<bool()>& condition) { return NS::pumpUntil(condition); }
};

// An endpoint whose port leaves the run loop with it.
template <class Endpoint>
class Scheduled {
  public:
    template <class... Args>
    explicit Scheduled(Args&&... args)
        : endpoint_(NS::make<Endpoint>(std::forward<Args>(args)...)) {}
    ~Scheduled() { end(); }
    Scheduled(const Scheduled&) = delete;
    Scheduled& operator=(const Scheduled&) = delete;

    // Lets the endpoint and its port go, as the end of its process would.
    void end() {
        if (endpoint_) {
            NS::RunLoop::currentRunLoop()->removePort_forMode(
                NS::Ref<NS::MachPort>(*endpoint_->port()), NS::RunLoopMode::kDefault);
            // A handler whose target is the endpoint itself would keep it.
            endpoint_->actions()->removeAllObjects();
            endpoint_ = nullptr;
        }
    }

    Endpoint* operator->() const { return endpoint_.get(); }
    Endpoint& operator*() const { return *endpoint_; }
    NS::Ref<Endpoint> ref() const { return NS::Ref<Endpoint>(*endpoint_); }

  private:
    NS::RefPtr<Endpoint> endpoint_;
};

} // namespace Tests
