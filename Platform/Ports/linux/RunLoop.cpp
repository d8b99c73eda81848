#include "Platform/Ports/RunLoop.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/linux/FileDescriptor.h"
#include "Platform/Ports/linux/Endpoints.h"
#include "Platform/Ports/linux/Looks.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <sys/epoll.h>
#include <unordered_map>
#include <vector>

namespace NS {

constinit const Class RunLoop::kClass{.name = "NSRunLoop", .superclass = &Object::kClass};
constinit const Class RunLoopObserver::kClass{.name = "NSRunLoopObserver",
                                              .superclass = &Object::kClass};

namespace {

using Monotonic = std::chrono::steady_clock;

// Waiting in pieces of a day keeps every number of milliseconds within an int.
constexpr double kLongestWait = 86400.0;
// Seconds since 2001 as a floating-point number come in steps of a tenth of this.
constexpr double kPrecisionOfDates = 1e-6;
constexpr int kForEver = -1;

// The time until a date, on a clock that nobody sets. Clocks are looked at when it is made and when
// something did not come in time, not with each message; for ever needs none.
class Patience {
  public:
    explicit Patience(const Date& date) {
        const double end = date.timeIntervalSinceReferenceDate();
        if (end >= Date::distantFuture()->timeIntervalSinceReferenceDate()) {
            return;
        }
        begin_ = Monotonic::now();
        deadline_ = begin_;
        const double seconds = end - absoluteTimeGetCurrent();
        if (seconds > 0) {
            const std::chrono::duration<double> wait(std::min(seconds, kLongestWait * 365 * 100) +
                                                     kPrecisionOfDates);
            deadline_ += std::chrono::duration_cast<Monotonic::duration>(wait);
        }
    }

    // At the beginning.
    int milliseconds() const noexcept { return millisecondsFrom(begin_); }
    int millisecondsLeft() const noexcept { return millisecondsFrom(Monotonic::now()); }
    bool isOver() const noexcept { return !isEndless() && Monotonic::now() >= deadline_; }
    bool isNone() const noexcept { return deadline_ == begin_; }

  private:
    bool isEndless() const noexcept { return deadline_ == Monotonic::time_point::max(); }
    // Rounded up, so that the wait never ends early.
    int millisecondsFrom(Monotonic::time_point now) const noexcept {
        if (isEndless()) {
            return kForEver;
        }
        const std::chrono::duration<double, std::milli> left = deadline_ - now;
        return static_cast<int>(std::ceil(std::clamp(left.count(), 0.0, kLongestWait * 1000)));
    }

    Monotonic::time_point begin_;
    Monotonic::time_point deadline_ = Monotonic::time_point::max();
};

} // namespace

class RunLoop::System {
  public:
    System() : epoll_(::epoll_create1(EPOLL_CLOEXEC)) {
        if (!epoll_) {
            Exception::raise(kGenericException, "the system gives no descriptor for a run loop");
        }
    }

    int descriptor() const noexcept { return epoll_.get(); }
    std::size_t sourceCount() const noexcept { return sources_.size(); }

    void add(const Ref<RunLoopSource>& source) {
        const int descriptor = source->descriptor();
        if (!sources_.emplace(descriptor, source).second) {
            return;
        }
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = descriptor;
        if (::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
            sources_.erase(descriptor);
            Exception::raise(kInvalidArgumentException, "a run loop cannot wait for this source");
        }
    }

    void remove(const RunLoopSource& source) {
        const auto found = sources_.find(source.descriptor());
        if (found == sources_.end() || found->second.get() != &source) {
            return;
        }
        (void)::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, found->first, nullptr);
        const Ref<RunLoopSource> kept = found->second; // its end may reach back here
        sources_.erase(found);
    }

    // Waits for one source and calls it; false when none was ready in time. One at a time: a
    // callback may take away any other source, or run the loop itself. The kernel gives each its
    // turn.
    bool serveOne(int milliseconds) {
        const bool isObserved = milliseconds != 0 && !observers_.empty();
        const int ready = isObserved ? observedWait(milliseconds) : wait(milliseconds);
        if (ready < 0) {
            return false;
        }
        const auto found = sources_.find(ready);
        if (found != sources_.end()) {
            const Ref<RunLoopSource> source = found->second;
            source->ready();
        }
        return true;
    }

    bool serveReady() {
        // Each source once, as far as the kernel's own order of turns goes; no more, since those
        // that are served may bring others.
        const std::size_t turns = sources_.size();
        std::size_t served = 0;
        while (served < turns && serveOne(0)) {
            ++served;
        }
        notifyObservers();
        return served > 0;
    }

    void add(const Ref<RunLoopObserver>& observer) {
        if (std::ranges::find(observers_, observer) == observers_.end()) {
            observers_.push_back(observer);
            looks_ = {}; // what was ready before says nothing of what will be
        }
    }
    void remove(const RunLoopObserver& observer) {
        std::erase_if(observers_, [&](const auto& other) { return other.get() == &observer; });
    }

    std::vector<Ref<MachPort>> ports;

  private:
    // The descriptor of a source that is ready in time, or -1.
    int wait(int milliseconds) noexcept {
        epoll_event event{};
        return ::epoll_wait(epoll_.get(), &event, 1, milliseconds) == 1 ? event.data.fd : -1;
    }

    // The same. The observers look once of many sources that are ready, but where sources become
    // ready one by one, they look before each wait, which then may be none.
    int observedWait(int milliseconds) {
        if (looks_.isDue()) {
            const int ready = wait(0);
            looks_.looked(ready >= 0);
            if (ready >= 0) {
                return ready;
            }
        } else {
            looks_.passed();
        }
        notifyObservers();
        return wait(milliseconds);
    }

    // Over a copy: an observer may take itself away.
    void notifyObservers() {
        if (observers_.empty()) {
            return;
        }
        const auto observers = observers_;
        for (const Ref<RunLoopObserver>& observer : observers) {
            observer->beforeWaiting();
        }
    }

    FileDescriptor epoll_;
    std::vector<Ref<RunLoopObserver>> observers_;
    Looks looks_; // for what is ready already, before the observers look
    std::unordered_map<int, Ref<RunLoopSource>> sources_;
};

RunLoop::RunLoop() : system_(std::make_unique<System>()) {}

RunLoop::~RunLoop() {
    for (const Ref<MachPort>& port : system_->ports) {
        port->endpoint().local()->setRunLoop(nullptr);
    }
}

Ref<RunLoop> RunLoop::currentRunLoop() {
    static thread_local const Ref<RunLoop> loop = make<RunLoop>();
    return loop;
}

void RunLoop::addPort_forMode(const Ref<MachPort>& port, RunLoopMode) {
    // A port of another process has nothing to serve: its answers come to a port of this one.
    LocalEndpoint* const own = port->endpoint().local();
    if (own != nullptr && std::ranges::find(system_->ports, port) == system_->ports.end()) {
        system_->ports.push_back(port);
        own->setRunLoop(this);
    }
}

void RunLoop::removePort_forMode(const Ref<MachPort>& port, RunLoopMode) {
    const auto found = std::ranges::find(system_->ports, port);
    if (found != system_->ports.end()) {
        const Ref<MachPort> kept = *found;
        system_->ports.erase(found);
        kept->endpoint().local()->setRunLoop(nullptr);
    }
}

void RunLoop::addSource_forMode(const Ref<RunLoopSource>& source, RunLoopMode) {
    system_->add(source);
}

void RunLoop::removeSource_forMode(const Ref<RunLoopSource>& source, RunLoopMode) {
    system_->remove(*source);
}

void RunLoop::addObserver_forMode(const Ref<RunLoopObserver>& observer, RunLoopMode) {
    system_->add(observer);
}

void RunLoop::removeObserver_forMode(const Ref<RunLoopObserver>& observer, RunLoopMode) {
    system_->remove(*observer);
}

bool RunLoop::runMode_beforeDate(RunLoopMode, const Date& date) {
    const Patience patience(date);
    bool served = system_->serveOne(patience.milliseconds());
    while (!served && !patience.isOver()) {
        served = system_->serveOne(patience.millisecondsLeft());
    }
    return served;
}

void RunLoop::runUntilDate(const Date& date) {
    const Patience patience(date);
    if (patience.isNone()) {
        (void)serveReady();
        return;
    }
    do {
        (void)system_->serveOne(patience.millisecondsLeft());
    } while (!patience.isOver());
}

void RunLoop::run() {
    for (;;) {
        (void)system_->serveOne(kForEver);
    }
}

int RunLoop::pollDescriptor() const noexcept {
    return system_->descriptor();
}

bool RunLoop::serveReady() {
    return system_->serveReady();
}

} // namespace NS
