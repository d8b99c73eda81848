#include "Shell/FinderService.h"

#include "Platform/Foundation/Log.h"
#include "Shell/FinderBusObject.h"
#include "Shell/FinderInterface.h"
#include "Shell/linux/BusConnection.h"
#include "Shell/linux/UnusedMemory.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace Shell {

namespace {

// How long a process that is about to end waits for its last answer to leave it.
constexpr std::chrono::milliseconds kLastAnswer{1000};
// What the bus answers to who wants a name that another one has.
constexpr std::uint32_t kInQueue = 2;

NS::Ref<NS::String> errorText(int negativeNumber) {
    return NS::String::fromFileSystemRepresentation(
        std::system_category().message(-negativeNumber));
}

int nameRequested(sd_bus_message* reply, void* onNamed, sd_bus_error*) {
    std::uint32_t answer = 0;
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) {
        NS::Log("the session bus refuses the name %@: %@", NS::str(FinderInterface::kName),
                errorText(-sd_bus_message_get_errno(reply)));
    } else if (sd_bus_message_read(reply, "u", &answer) > 0 && answer == kInQueue) {
        NS::Log("another process has the name %@ on the session bus; waiting for it",
                NS::str(FinderInterface::kName));
    }
    if (const auto& tell = *static_cast<std::function<void()>*>(onNamed)) {
        tell();
    }
    return 1;
}

} // namespace

class FinderService::Server final : public BusConnection::Delegate {
  public:
    Server(NS::Ref<FI::FinderSync> extension, MenuState state, Host host)
        : object_(std::move(extension), std::move(state), std::move(host)) {}
    ~Server() { connection_->close(); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Zero or more, or the negative number of the system's error.
    int start(std::function<void()> onNamed) {
        onNamed_ = std::move(onNamed);
        int result = connection_->open();
        if (result >= 0) {
            result = object_.exportOn(connection_->bus());
        }
        if (result >= 0) {
            result = sd_bus_request_name_async(connection_->bus(), nullptr, FinderInterface::kName,
                                               SD_BUS_NAME_QUEUE, nameRequested, &onNamed_);
        }
        if (result < 0) {
            connection_->close();
            return result;
        }
        connection_->schedule();
        return result;
    }

    // While the bus takes nothing, changes are gathered instead of queued.
    void busWillServe() override {
        object_.refresh();
        if (!connection_->hasUnsent()) {
            object_.publishChanges(connection_->bus());
        }
    }

    void busServed() override {
        if (object_.takeWasLarge()) {
            returnUnusedMemory();
        }
        if (!object_.hasRaised()) {
            return;
        }
        connection_->flush(kLastAnswer);
        std::rethrow_exception(object_.takeRaised());
    }

    std::uint64_t nextMoment() const override {
        using std::chrono::ceil;
        using std::chrono::microseconds;
        const auto moment = object_.nextLook(); // on the bus's own clock
        return moment ? static_cast<std::uint64_t>(
                            ceil<microseconds>(moment->time_since_epoch()).count())
                      : BusConnection::kNever;
    }

    void busLost() override {
        NS::Log("the session bus has gone; file managers cannot ask any more");
        object_.callersGone();
    }

  private:
    std::function<void()> onNamed_;
    FinderBusObject object_;
    NS::Ref<BusConnection> connection_ = NS::make<BusConnection>(*this);
};

FinderService::FinderService(NS::Ref<FI::FinderSync> extension, MenuState state, Host host)
    : server_(std::make_unique<Server>(std::move(extension), std::move(state), std::move(host))) {}

FinderService::~FinderService() = default;

bool FinderService::start(std::function<void()> onNamed) {
    const int result = server_->start(std::move(onNamed));
    if (result < 0) {
        NS::Log("no session bus for file managers to ask over: %@", errorText(result));
    }
    return result >= 0;
}

} // namespace Shell
