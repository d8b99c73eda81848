#pragma once

#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Ports/RunLoop.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <memory>

namespace Shell {

// A connection to the session bus that the run loop of its thread serves, a message in each turn,
// so that a flood of them leaves the loop's other sources their turns. Never waits for the bus.
//
// The loop waits for one descriptor, while the library has two things to wait for that change: its
// socket and a moment. Both are in an epoll instance, whose descriptor is this source's. Once it is
// connected the socket remains, and is a source of its own: the kernel takes longer over an epoll
// instance within another one.
class BusConnection final : public NS::RunLoopSource {
    NS_OBJECT(BusConnection)
  public:
    static constexpr std::uint64_t kNever = UINT64_MAX;

    class Delegate {
      public:
        // Before a message is served, and before the run loop waits.
        virtual void busWillServe() = 0;
        // After a message has been served. What it raises leaves the loop's turn.
        virtual void busServed() = 0;
        // The bus has gone; the connection is closed.
        virtual void busLost() = 0;
        // When the loop is to have a turn even if nothing happens, on the system's monotonic clock
        // in microseconds. Asked whenever it is about to wait.
        virtual std::uint64_t nextMoment() const { return kNever; }

      protected:
        ~Delegate() = default;
    };

    // The delegate outlives the connection, or close() comes first.
    explicit BusConnection(Delegate& delegate);
    ~BusConnection() override;

    // Begins to connect; what is sent meanwhile goes out afterwards. Zero, or the negative number
    // of the system's error when there is no session bus to connect to.
    int open();
    // Joins the current run loop.
    void schedule();
    // Leaves it, and drops what has not been sent. Closing twice is closing once.
    void close();

    // Null unless open.
    sd_bus* bus() const noexcept { return bus_.get(); }
    // Whether anything that was sent still waits for the bus to take it.
    bool hasUnsent() const;
    // Waits until the bus has taken everything, but not longer than the limit. Serves nothing that
    // a busServed() would have to see.
    void flush(std::chrono::milliseconds limit);

    int descriptor() const noexcept override { return epoll_.get(); }
    void ready() override;

  private:
    class Observer;
    class Incoming;
    struct Closer {
        void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
    };

    void beforeWaiting();
    void awaitEvents();
    void awaitIncoming(int socket);
    void leaveIncoming();
    void awaitSocket(int socket, int events);
    void takeExpiration();
    void awaitMoment(std::uint64_t microseconds);
    void lose();

    Delegate& delegate_;
    NS::FileDescriptor epoll_;
    NS::FileDescriptor timer_;
    std::unique_ptr<sd_bus, Closer> bus_;
    NS::RefPtr<NS::RunLoop> loop_;
    NS::RefPtr<Observer> observer_;
    NS::RefPtr<Incoming> incoming_; // nil until it is connected
    int awaitedSocket_ = -1;
    int awaitedEvents_ = 0;
    std::uint64_t awaitedMoment_ = kNever;
};

} // namespace Shell
