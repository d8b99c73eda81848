#include "Shell/linux/BusConnection.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/timerfd.h>

namespace Shell {

constinit const NS::Class BusConnection::kClass{.name = "BusConnection",
                                                .superclass = &NS::RunLoopSource::kClass};

// Looks after the connection before the loop waits: what other sources did may have sent something.
class BusConnection::Observer final : public NS::RunLoopObserver {
    NS_OBJECT(Observer)
  public:
    explicit Observer(BusConnection& connection) noexcept : connection_(connection) {}
    void beforeWaiting() override { connection_.beforeWaiting(); }

  private:
    BusConnection& connection_;
};

constinit const NS::Class BusConnection::Observer::kClass{
    .name = "BusConnectionObserver", .superclass = &NS::RunLoopObserver::kClass};

// The socket of a connection that is made, and waited for to be read.
class BusConnection::Incoming final : public NS::RunLoopSource {
    NS_OBJECT(Incoming)
  public:
    Incoming(BusConnection& connection, int socket) noexcept
        : connection_(connection), socket_(socket) {}
    int descriptor() const noexcept override { return socket_; }
    void ready() override { connection_.ready(); }

  private:
    BusConnection& connection_;
    const int socket_;
};

constinit const NS::Class BusConnection::Incoming::kClass{.name = "BusConnectionIncoming",
                                                          .superclass = &NS::RunLoopSource::kClass};

namespace {

constexpr std::uint64_t kMicroseconds = 1'000'000;

// Adds a descriptor, or changes what it is waited for; it leaves by being closed.
int waitFor(int epoll, int descriptor, std::uint32_t events) noexcept {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    if (::epoll_ctl(epoll, EPOLL_CTL_MOD, descriptor, &event) == 0) {
        return 0;
    }
    return ::epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event);
}

} // namespace

BusConnection::BusConnection(Delegate& delegate) : delegate_(delegate) {}

BusConnection::~BusConnection() {
    close();
}

int BusConnection::open() {
    epoll_.reset(::epoll_create1(EPOLL_CLOEXEC));
    timer_.reset(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!epoll_ || !timer_ || waitFor(epoll_.get(), timer_.get(), EPOLLIN) != 0) {
        return -errno;
    }
    sd_bus* bus = nullptr;
    const int result = sd_bus_open_user_with_description(&bus, "finder");
    if (result < 0) {
        return result;
    }
    bus_.reset(bus);
    return sd_bus_set_exit_on_disconnect(bus, 0);
}

void BusConnection::schedule() {
    loop_ = NS::RunLoop::currentRunLoop();
    observer_ = NS::make<Observer>(*this);
    loop_->addSource_forMode(NS::Ref<NS::RunLoopSource>(*this), NS::RunLoopMode::kDefault);
    loop_->addObserver_forMode(NS::Ref<NS::RunLoopObserver>(*observer_), NS::RunLoopMode::kDefault);
    awaitEvents();
}

void BusConnection::close() {
    leaveIncoming();
    if (loop_) {
        loop_->removeObserver_forMode(NS::Ref<NS::RunLoopObserver>(*observer_),
                                      NS::RunLoopMode::kDefault);
        const NS::RefPtr<NS::RunLoop> loop = std::move(loop_);
        loop->removeSource_forMode(NS::Ref<NS::RunLoopSource>(*this), NS::RunLoopMode::kDefault);
    }
    bus_.reset();
}

bool BusConnection::hasUnsent() const {
    std::uint64_t messages = 0;
    return bus_ && sd_bus_get_n_queued_write(bus_.get(), &messages) >= 0 && messages > 0;
}

void BusConnection::flush(std::chrono::milliseconds limit) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + limit;
    while (hasUnsent() && Clock::now() < deadline) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd socket{sd_bus_get_fd(bus_.get()), POLLOUT, 0};
        (void)::poll(&socket, 1, static_cast<int>(left.count()) + 1);
        if (sd_bus_process(bus_.get(), nullptr) < 0) {
            return; // there is nobody left to send it to
        }
    }
}

void BusConnection::ready() {
    const NS::Ref<BusConnection> self(*this);
    takeExpiration();
    delegate_.busWillServe();
    const int result = sd_bus_process(bus_.get(), nullptr);
    delegate_.busServed();
    if (result < 0 || sd_bus_is_open(bus_.get()) <= 0) {
        lose();
        return;
    }
    awaitEvents();
}

void BusConnection::beforeWaiting() {
    delegate_.busWillServe();
    awaitEvents();
}

void BusConnection::lose() {
    close();
    delegate_.busLost();
}

void BusConnection::awaitEvents() {
    const int socket = sd_bus_get_fd(bus_.get());
    const int events = sd_bus_get_events(bus_.get());
    std::uint64_t moment = kNever;
    const int known = sd_bus_get_timeout(bus_.get(), &moment);
    if (socket < 0 || events < 0 || known < 0) {
        leaveIncoming(); // the library may have closed it
        awaitMoment(0);  // it is closing, which is the next turn's to find out
        return;
    }
    awaitIncoming(socket);
    awaitSocket(socket, incoming_ ? events & ~POLLIN : events);
    awaitMoment(std::min(moment, delegate_.nextMoment()));
}

void BusConnection::awaitIncoming(int socket) {
    if (!incoming_ && loop_ && sd_bus_is_ready(bus_.get()) > 0) {
        incoming_ = NS::make<Incoming>(*this, socket);
        loop_->addSource_forMode(NS::Ref<NS::RunLoopSource>(*incoming_), NS::RunLoopMode::kDefault);
    }
}

void BusConnection::leaveIncoming() {
    if (const NS::RefPtr<Incoming> incoming = std::move(incoming_)) {
        loop_->removeSource_forMode(NS::Ref<NS::RunLoopSource>(*incoming),
                                    NS::RunLoopMode::kDefault);
    }
}

// The library may go on to another address, and so to another socket, while it connects.
void BusConnection::awaitSocket(int socket, int events) {
    if (socket == awaitedSocket_ && events == awaitedEvents_) {
        return;
    }
    awaitedSocket_ = socket;
    awaitedEvents_ = events;
    if (waitFor(epoll_.get(), socket, static_cast<std::uint32_t>(events)) != 0) {
        awaitedSocket_ = -1;
    }
}

// A timer that has run out stays readable until it is read or set.
void BusConnection::takeExpiration() {
    std::uint64_t expirations = 0;
    if (awaitedMoment_ != kNever && ::read(timer_.get(), &expirations, sizeof expirations) > 0) {
        awaitedMoment_ = kNever;
    }
}

void BusConnection::awaitMoment(std::uint64_t microseconds) {
    if (microseconds == awaitedMoment_) {
        return;
    }
    awaitedMoment_ = microseconds;
    itimerspec moment{};
    if (microseconds != kNever) {
        // All zeros would be never.
        moment.it_value.tv_sec = static_cast<time_t>(microseconds / kMicroseconds);
        moment.it_value.tv_nsec =
            std::max<long>(1, static_cast<long>(microseconds % kMicroseconds) * 1000);
    }
    (void)::timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME, &moment, nullptr);
}

} // namespace Shell
