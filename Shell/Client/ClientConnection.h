#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <systemd/sd-bus.h>

namespace Shell {

struct BusMessageUnref {
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageUnref>;

struct BusSlotUnref {
    void operator()(sd_bus_slot* slot) const noexcept { sd_bus_slot_unref(slot); }
};
using BusSlot = std::unique_ptr<sd_bus_slot, BusSlotUnref>;

// A connection of a file manager to the session bus that never waits for it, but in waitUntil(),
// which ends in time. Belongs to one thread.
class ClientConnection {
  public:
    using Clock = std::chrono::steady_clock; // the one that the bus's library and the kernel use

    // Begins to connect; error() tells why it could not.
    ClientConnection();
    ~ClientConnection();
    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;

    // Null when there is no bus, or no longer.
    sd_bus* bus() const noexcept { return bus_.get(); }
    const std::string& error() const noexcept { return error_; }

    // Readable when serve() has something to do; the same for the life of this object. -1 when
    // there was no bus.
    int descriptor() const noexcept { return epoll_; }
    // A moment as the bus counts it, never earlier.
    static std::uint64_t microsecondsOf(Clock::time_point moment) noexcept {
        return static_cast<std::uint64_t>(
            std::chrono::ceil<std::chrono::microseconds>(moment.time_since_epoch()).count());
    }

    // Handles what has come, without waiting. Of a flood it leaves the rest for the next time.
    void serve();
    // The same where something has come: to look costs less than to handle nothing.
    void serveIfReady();
    // Makes the descriptor readable until serve() is called: at once, or from a moment on. Of two
    // moments the earlier one counts.
    void wake() noexcept { wakeAt(Clock::time_point()); }
    void wakeAt(Clock::time_point moment) noexcept;
    // Handles what comes until the condition holds; false when it did not in time, or the bus went.
    bool waitUntil(const std::function<bool()>& condition, Clock::time_point deadline);
    // Sends a call, with whose answer isAnswered() becomes true; an answer to another one is
    // nobody's then. Zero or more, or the negative number of the system's error.
    int ask(sd_bus_message* call) noexcept;
    bool isAnswered() const noexcept { return answer_ != nullptr; }
    // Null without one; an answer that comes later is nobody's.
    BusMessage takeAnswer() noexcept;
    // Looks up what the connection waits for now; after calls that send something.
    void awaitEvents() noexcept;
    // How many messages the bus has not taken yet.
    std::uint64_t unsent() const noexcept;

  private:
    struct Close {
        void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
    };

    static int received(sd_bus_message* message, void* object, sd_bus_error*) noexcept;
    bool isReady() const noexcept;
    bool process();
    void pollUntil(Clock::time_point deadline) const;
    void lose(int negativeNumber);
    void awaitSocket() noexcept;
    void awaitMoment(std::uint64_t microseconds) noexcept;
    void takeExpiration(std::uint64_t now) noexcept;
    void closeDescriptors() noexcept;

    int epoll_;
    int timer_;
    std::uint64_t wakeMoment_ = UINT64_MAX; // in microseconds; never
    // What the kernel has been told last, which is not worth a call to tell again.
    std::uint64_t awaitedMoment_ = UINT64_MAX;
    int awaitedEvents_ = -1; // none that lasts
    std::unique_ptr<sd_bus, Close> bus_;
    std::uint64_t asked_ = 0; // the number of the call that is not answered yet; none has 0
    BusMessage answer_;
    std::string error_;
};

} // namespace Shell
