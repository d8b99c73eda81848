#include "Shell/WaitingName.h"

#include "Shell/FinderInterface.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstdint>
#include <poll.h>

namespace Shell {

namespace {

using Clock = std::chrono::steady_clock;

struct Closer {
    void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, Closer>;

int answered(sd_bus_message*, void* flag, sd_bus_error*) {
    *static_cast<bool*>(flag) = true;
    return 1;
}

// One step of what the bus and this process say to each other; false when the bus has gone.
bool step(sd_bus* bus, Clock::time_point deadline) {
    const int result = sd_bus_process(bus, nullptr);
    const int events = sd_bus_get_events(bus);
    if (result < 0 || events < 0) {
        return false;
    }
    if (result == 0) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd socket{sd_bus_get_fd(bus), static_cast<short>(events), 0};
        (void)::poll(&socket, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
    }
    return true;
}

Bus openBus() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user_with_description(&opened, "waiting") < 0) {
        return nullptr;
    }
    Bus bus(opened);
    return sd_bus_set_exit_on_disconnect(opened, 0) < 0 ? nullptr : std::move(bus);
}

} // namespace

class WaitingName::Connection {
  public:
    explicit Connection(std::chrono::milliseconds patience) : bus_(openBus()) {
        if (!bus_ || sd_bus_request_name_async(bus_.get(), nullptr, FinderInterface::kWaitingName,
                                               SD_BUS_NAME_QUEUE, &answered, &isAnswered_) < 0) {
            return;
        }
        const auto deadline = Clock::now() + patience;
        while (!isAnswered_ && Clock::now() < deadline && step(bus_.get(), deadline)) {
        }
    }

  private:
    bool isAnswered_ = false; // outlives the bus, which writes it
    Bus bus_;
};

WaitingName::WaitingName(std::chrono::milliseconds patience)
    : connection_(std::make_unique<Connection>(patience)) {}

WaitingName::~WaitingName() = default;

void WaitingName::release() noexcept {
    connection_.reset();
}

} // namespace Shell
