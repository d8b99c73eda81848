// The small message by way of a port, and by way of the link with what it archives.

#include "Benchmarks/Support/Pages.h"
#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/SmallMessage.h"
#include "Benchmarks/Support/Transport.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/QVExtensionActions.h"
#include "QVFinderExtension/QVExtensionCommsClient.h"

#include <functional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Benchmarks {

namespace {

constexpr const char* kPortName = "com.Quorvane.Benchmark";

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

// Counts what comes in, and acts on each so manieth.
class Batches {
  public:
    Batches(std::size_t size, std::function<void()> complete)
        : size_(size), complete_(std::move(complete)) {}

    void count() {
        if (++count_ == size_) {
            count_ = 0;
            complete_();
        }
    }

  private:
    std::size_t size_;
    std::size_t count_ = 0;
    std::function<void()> complete_;
};

// Waits in the run loop until something has happened once more.
class Happening {
  public:
    void happen() noexcept { happened_ = true; }
    void await() {
        while (!happened_) {
            (void)loop_->runMode_beforeDate(NS::RunLoopMode::kDefault, forEver_);
        }
        happened_ = false;
    }

  private:
    NS::Ref<NS::RunLoop> loop_ = NS::RunLoop::currentRunLoop();
    NS::Ref<NS::Date> forEver_ = NS::Date::distantFuture();
    bool happened_ = false;
};

// A port of this process that counts what it gets.
class Receiver final : public NS::MachPortDelegate {
  public:
    using Check = void(const NS::Array& components);

    Receiver(Check* check, std::size_t batch, std::function<void()> complete)
        : check_(check), batches_(batch, std::move(complete)) {
        port_->setDelegate(this);
        NS::RunLoop::currentRunLoop()->addPort_forMode(port_, NS::RunLoopMode::kDefault);
    }
    ~Receiver() override {
        NS::RunLoop::currentRunLoop()->removePort_forMode(port_, NS::RunLoopMode::kDefault);
        port_->setDelegate(nullptr);
    }

    void handlePortMessage(const NS::Ref<NS::PortMessage>& message) override {
        check_(*message->components());
        sender_ = message->sendPort();
        batches_.count();
    }

    const NS::Ref<NS::MachPort>& port() const noexcept { return port_; }
    // Who sent the last message.
    const NS::RefPtr<NS::MachPort>& sender() const noexcept { return sender_; }

  private:
    NS::Ref<NS::MachPort> port_ = NS::MachPort::port();
    NS::RefPtr<NS::MachPort> sender_;
    Check* check_;
    Batches batches_;
};

void send(NS::MachPort& destination, const NS::Array& components,
          const NS::Ref<NS::MachPort>& from) {
    static const NS::Ref<NS::Date> noWaiting = NS::make<NS::Date>(0); // as the link does
    require(destination.sendBeforeDate_components_from_reserved(noWaiting, components,
                                                                NS::RefPtr<NS::MachPort>(from), 0),
            "a message was lost");
}

void checkSmall(const NS::Array& components) {
    require(components.count() == 2 &&
                NS::cast<NS::Data>(components.objectAtIndex(1))->length() == kArchiveLength,
            "a message came that nobody sent");
}

void checkPayload(const NS::Array& components) {
    require(components.count() == 1, "a message came that nobody sent");
    readPages(NS::cast<NS::Data>(components.objectAtIndex(0))->bytes());
}

NS::Ref<NS::Array> payloadOf(std::size_t length) {
    std::vector<std::byte> bytes(length);
    fillPages(bytes);
    return NS::Array::arrayWithObjects({NS::Data::dataWithVector(std::move(bytes))});
}

NS::Ref<NS::MachPort> otherSide() {
    const auto found = NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str(kPortName));
    require(static_cast<bool>(found), "the other side's port is not there");
    return NS::Ref<NS::MachPort>(*found);
}

// Sends the same message again and again, and gets small ones for answers.
class PortTransport final : public Transport {
  public:
    explicit PortTransport(NS::Ref<NS::Array> message) : message_(std::move(message)) {}

    void post() override { send(destination_, message_, receiver_->port()); }
    void awaitAnswer() override { answer_.await(); }

  private:
    Happening answer_;
    NS::Ref<Receiver> receiver_ = NS::make<Receiver>(&checkSmall, 1U, [this] { answer_.happen(); });
    NS::Ref<NS::MachPort> destination_ = otherSide();
    NS::Ref<NS::Array> message_;
};

void serve(Receiver::Check* check, std::size_t batch) {
    Receiver* answering = nullptr;
    const auto answer = smallMessage();
    const auto receiver = NS::make<Receiver>(
        check, batch, [&] { send(*answering->sender(), answer, answering->port()); });
    answering = receiver.get();
    require(NS::MachBootstrapServer::sharedInstance()->registerPort_name(receiver->port(),
                                                                         *NS::str(kPortName)),
            "the port's name is taken");
    Peer::sayReady();
    NS::RunLoop::currentRunLoop()->run();
}

std::unique_ptr<Transport> connectPort(const std::filesystem::path&, std::size_t) {
    return std::make_unique<PortTransport>(smallMessage());
}

void servePort(const std::filesystem::path&, std::size_t batch) {
    serve(&checkSmall, batch);
}

std::unique_ptr<Transport> connectPortPayload(const std::filesystem::path&, std::size_t length) {
    return std::make_unique<PortTransport>(payloadOf(length));
}

void servePortPayload(const std::filesystem::path&, std::size_t) {
    serve(&checkPayload, 1);
}

// One end of the link: counts the paths that its handler gets.
class Handler final : public NS::Object {
    NS_OBJECT(Handler)
  public:
    Handler(std::size_t batch, std::function<void()> complete)
        : batches_(batch, std::move(complete)) {}

    void share(NS::RefPtr<NS::String> path) {
        require(path && path->length() == length_, "a path came that nobody sent");
        batches_.count();
    }
    void extensionAlive(NS::RefPtr<NS::MachPort> client) { client_ = client; }
    const NS::RefPtr<NS::MachPort>& client() const noexcept { return client_; }

  private:
    std::size_t length_ = pathOnDrive()->length();
    NS::RefPtr<NS::MachPort> client_;
    Batches batches_;
};

constexpr NS::Method kMethods[] = {
    NS::method<&Handler::share>("share:"),
    NS::method<&Handler::extensionAlive>("extensionAlive:"),
};

constinit const NS::Class Handler::kClass{
    .name = "BenchmarkHandler", .superclass = &NS::Object::kClass, .methods = kMethods};

class LinkTransport final : public Transport {
  public:
    LinkTransport() {
        client_->setTarget_selector_for(answers_, {"share:"}, NS::str(QVExtensionAction::kShare));
    }
    ~LinkTransport() override {
        NS::RunLoop::currentRunLoop()->removePort_forMode(NS::Ref<NS::MachPort>(*client_->port()),
                                                          NS::RunLoopMode::kDefault);
    }

    void post() override { client_->share(path_); }
    void awaitAnswer() override { answer_.await(); }

  private:
    Happening answer_;
    NS::Ref<QVExtensionCommsClient> client_ = QVExtensionCommsClient::new_();
    NS::Ref<Handler> answers_ = NS::make<Handler>(1U, [this] { answer_.happen(); });
    NS::Ref<NS::String> path_ = pathOnDrive();
};

std::unique_ptr<Transport> connectLink(const std::filesystem::path&, std::size_t) {
    return std::make_unique<LinkTransport>();
}

void serveLink(const std::filesystem::path&, std::size_t batch) {
    const auto server = NS::make<QVExtensionCommsComponent>(NS::str(kServerPortName));
    const auto message = smallMessage();
    const auto archive = NS::Array::arrayWithObjects({message->objectAtIndex(1)});
    Handler* answering = nullptr;
    const auto handler = NS::make<Handler>(batch, [&] {
        server->sendAction_data_to(NS::str(QVExtensionAction::kShare), *archive,
                                   answering->client());
    });
    answering = handler.get();
    server->setTarget_selector_for(handler, {"share:"}, NS::str(QVExtensionAction::kShare));
    server->setTarget_selector_for(handler, {"extensionAlive:"},
                                   NS::str(QVExtensionAction::kAlive));
    Peer::sayReady();
    NS::RunLoop::currentRunLoop()->run();
}

} // namespace

const TransportKind kPort{"port", &connectPort, &servePort};
const TransportKind kPortPayload{"port-payload", &connectPortPayload, &servePortPayload};
const TransportKind kLink{"link", &connectLink, &serveLink};

} // namespace Benchmarks
