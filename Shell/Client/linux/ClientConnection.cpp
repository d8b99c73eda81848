#include "Shell/Client/ClientConnection.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Shell {

namespace {

constexpr std::uint64_t kMicroseconds = 1'000'000;
constexpr std::uint64_t kNever = UINT64_MAX;
// What one turn of a file manager's loop may cost, however much there is.
constexpr int kMessagesPerTurn = 64;

// Adds a descriptor, or changes what it is waited for; it leaves by being closed.
bool watch(int epoll, int descriptor, int events) noexcept {
    epoll_event event{};
    event.events = static_cast<std::uint32_t>(events);
    event.data.fd = descriptor;
    return ::epoll_ctl(epoll, EPOLL_CTL_MOD, descriptor, &event) == 0 ||
           ::epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

ClientConnection::Clock::time_point momentOf(std::uint64_t microseconds) {
    // The library's moments are on the clock that steady_clock reads.
    constexpr std::uint64_t kFarAway = kNever / 4000;
    return ClientConnection::Clock::time_point(
        std::chrono::microseconds(std::min(microseconds, kFarAway)));
}

} // namespace

ClientConnection::ClientConnection()
    : epoll_(::epoll_create1(EPOLL_CLOEXEC)),
      timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
    (void)watch(epoll_, timer_, EPOLLIN); // without descriptors the next call fails as well
    sd_bus* bus = nullptr;
    int result = sd_bus_open_user_with_description(&bus, "file manager");
    bus_.reset(bus);
    if (result >= 0) {
        result = sd_bus_add_filter(bus, nullptr, &received, this);
    }
    if (result < 0) {
        lose(result);
        closeDescriptors();
        return;
    }
    (void)sd_bus_set_exit_on_disconnect(bus, 0); // the process is not ours to end
    // Who waits for an answer knows how long; an extension that is stopped gives others for later.
    (void)sd_bus_set_method_call_timeout(bus, UINT64_MAX);
    awaitEvents();
}

ClientConnection::~ClientConnection() {
    bus_.reset();
    closeDescriptors();
}

void ClientConnection::closeDescriptors() noexcept {
    for (int* const descriptor : {&epoll_, &timer_}) {
        if (*descriptor >= 0) {
            (void)::close(*descriptor); // nothing was written to it
        }
        *descriptor = -1;
    }
}

void ClientConnection::serve() {
    const std::uint64_t now = microsecondsOf(Clock::now());
    takeExpiration(now);
    if (wakeMoment_ <= now) {
        wakeMoment_ = kNever;
    }
    for (int i = 0; i < kMessagesPerTurn && process(); ++i) {
    }
    awaitEvents();
}

void ClientConnection::serveIfReady() {
    if (isReady()) {
        serve();
    }
}

// Whether there is more to do than to wait for what comes, or something has come.
bool ClientConnection::isReady() const noexcept {
    if (!bus_) {
        return false;
    }
    std::uint64_t moment = kNever;
    pollfd socket{sd_bus_get_fd(bus_.get()), POLLIN, 0};
    return sd_bus_get_events(bus_.get()) != POLLIN ||
           sd_bus_get_timeout(bus_.get(), &moment) != 0 || ::poll(&socket, 1, 0) != 0;
}

void ClientConnection::wakeAt(Clock::time_point moment) noexcept {
    wakeMoment_ = std::min(wakeMoment_, microsecondsOf(moment));
    awaitEvents();
}

bool ClientConnection::waitUntil(const std::function<bool()>& condition,
                                 Clock::time_point deadline) {
    // It waits first: what is asked has just been sent, and to look for an answer would be in vain.
    bool wasBusy = false;
    while (!condition() && bus_) {
        if (!wasBusy) {
            pollUntil(deadline);
        }
        wasBusy = process();
        if (Clock::now() >= deadline) {
            break; // in time also when there is no end of messages
        }
    }
    awaitEvents();
    return condition();
}

int ClientConnection::ask(sd_bus_message* call) noexcept {
    answer_.reset();
    asked_ = 0;
    return sd_bus_send(bus_.get(), call, &asked_);
}

BusMessage ClientConnection::takeAnswer() noexcept {
    asked_ = 0;
    return std::move(answer_);
}

// Of all that comes. To look at the number takes the library less than to have a place for one
// answer made, found and taken away.
int ClientConnection::received(sd_bus_message* message, void* object, sd_bus_error*) noexcept {
    auto& self = *static_cast<ClientConnection*>(object);
    std::uint64_t answered = 0;
    if (self.asked_ == 0 || sd_bus_message_get_reply_cookie(message, &answered) < 0 ||
        answered != self.asked_) {
        return 0;
    }
    self.asked_ = 0;
    self.answer_.reset(sd_bus_message_ref(message));
    return 1;
}

std::uint64_t ClientConnection::unsent() const noexcept {
    std::uint64_t messages = 0;
    return bus_ && sd_bus_get_n_queued_write(bus_.get(), &messages) >= 0 ? messages : 0;
}

// One step; false when there was nothing to do.
bool ClientConnection::process() {
    if (!bus_) {
        return false;
    }
    const int result = sd_bus_process(bus_.get(), nullptr);
    if (result < 0) {
        lose(result);
    } else if (sd_bus_is_open(bus_.get()) <= 0) {
        lose(-ECONNRESET);
    }
    return result > 0 && bus_;
}

void ClientConnection::pollUntil(Clock::time_point deadline) const {
    if (!bus_) {
        return;
    }
    std::uint64_t moment = kNever;
    if (sd_bus_get_timeout(bus_.get(), &moment) > 0) {
        deadline = std::min(deadline, momentOf(moment));
    }
    const auto left = std::chrono::ceil<std::chrono::microseconds>(
        std::max(deadline - Clock::now(), Clock::duration::zero()));
    const timespec wait{static_cast<time_t>(left.count() / 1'000'000),
                        static_cast<long>(left.count() % 1'000'000) * 1000};
    pollfd socket{sd_bus_get_fd(bus_.get()), static_cast<short>(sd_bus_get_events(bus_.get())), 0};
    (void)::ppoll(&socket, 1, &wait, nullptr);
}

void ClientConnection::lose(int negativeNumber) {
    error_ =
        "the session bus cannot be reached: " + std::system_category().message(-negativeNumber);
    bus_.reset();
    awaitMoment(wakeMoment_);
}

void ClientConnection::awaitEvents() noexcept {
    if (!bus_) {
        awaitMoment(wakeMoment_);
        return;
    }
    awaitSocket();
    std::uint64_t moment = kNever;
    (void)sd_bus_get_timeout(bus_.get(), &moment); // fails on a connection that serve() will lose
    awaitMoment(std::min(wakeMoment_, moment));
}

// Each time anew while it connects: the library may go on to another address with a socket of the
// same number.
void ClientConnection::awaitSocket() noexcept {
    const int socket = sd_bus_get_fd(bus_.get());
    const int events = sd_bus_get_events(bus_.get());
    if (socket < 0 || events < 0 || events == awaitedEvents_) {
        return;
    }
    const bool lasts = sd_bus_is_ready(bus_.get()) > 0;
    const bool awaited = watch(epoll_, socket, events); // if not, a question still sees what comes
    awaitedEvents_ = lasts && awaited ? events : -1;
}

// A timer that has run out stays readable until it is read or set.
void ClientConnection::takeExpiration(std::uint64_t now) noexcept {
    std::uint64_t expirations = 0;
    if (awaitedMoment_ <= now && ::read(timer_, &expirations, sizeof expirations) > 0) {
        awaitedMoment_ = kNever;
    }
}

void ClientConnection::awaitMoment(std::uint64_t microseconds) noexcept {
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
    (void)::timerfd_settime(timer_, TFD_TIMER_ABSTIME, &moment, nullptr);
}

} // namespace Shell
