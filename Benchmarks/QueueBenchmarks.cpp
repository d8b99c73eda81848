// How many messages wait for a process that does not look, and how soon is its death noticed?

#include "Benchmarks/Support/LinkPeers.h"
#include "Benchmarks/Support/ScratchFolder.h"
#include "Benchmarks/Support/SmallMessage.h"
#include "Benchmarks/linux/RawQueue.h"
#include "Platform/Ports/MachBootstrapServer.h"
#include "Platform/Ports/RunLoop.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace Benchmarks;
using Clock = std::chrono::steady_clock;

NS::Ref<NS::MachPort> portNamed(const char* name) {
    return NS::Ref<NS::MachPort>(
        *NS::MachBootstrapServer::sharedInstance()->portForName(*NS::str(name)));
}

bool send(NS::MachPort& destination, const NS::Ref<NS::MachPort>& from) {
    static const auto message = smallMessage();
    return destination.sendBeforeDate_components_from_reserved(NS::Date::date(), message, from, 0);
}

void waitingInPort(benchmark::State& state) {
    const ScratchFolder folder;
    const auto receiver = NS::MachPort::port();
    const auto sender = NS::MachPort::port();
    constexpr const char* kName = "com.Quorvane.Waiting";
    (void)NS::MachBootstrapServer::sharedInstance()->registerPort_name(receiver, *NS::str(kName));
    int waiting = 0;
    for (auto step : state) {
        const auto found = portNamed(kName);
        while (send(found, sender)) {
            ++waiting;
        }
    }
    state.counters["messages"] = waiting;
}

void waitingInSocket(benchmark::State& state) {
    int waiting = 0;
    for (auto step : state) {
        waiting = messagesThatWaitInSocket();
    }
    state.counters["messages"] = waiting;
}

// What a process notices a death by: a port in its run loop.
class PortWatch {
  public:
    PortWatch() {
        NS::RunLoop::currentRunLoop()->addPort_forMode(own_, NS::RunLoopMode::kDefault);
        (void)send(other_, own_);
    }
    ~PortWatch() {
        NS::RunLoop::currentRunLoop()->removePort_forMode(own_, NS::RunLoopMode::kDefault);
    }

    void awaitDeath() {
        const auto farAway = NS::Date::dateWithTimeIntervalSinceNow(60);
        while (other_->isValid()) {
            (void)NS::RunLoop::currentRunLoop()->runMode_beforeDate(NS::RunLoopMode::kDefault,
                                                                    *farAway);
        }
    }

  private:
    NS::Ref<NS::MachPort> own_ = NS::MachPort::port();
    NS::Ref<NS::MachPort> other_ = portNamed("com.Quorvane.Benchmark");
};

// Seconds from a signal that nobody survives until it is noticed.
template <class Watch>
double deathOf(const TransportKind& kind) {
    const ScratchFolder folder;
    LinkPeers peers(kind, folder.path(), 1000);
    Watch watch{};
    const auto start = Clock::now();
    peers.peer().sendKill();
    watch.awaitDeath();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

template <class Watch>
void deaths(benchmark::State& state, const TransportKind& kind) {
    std::vector<double> times;
    for (auto step : state) {
        times.push_back(deathOf<Watch>(kind));
        state.SetIterationTime(times.back());
    }
    std::ranges::sort(times);
    state.counters["p99"] = times[times.size() * 99 / 100];
}

void registerCases() {
    constexpr int kDeaths = 100;
    benchmark::RegisterBenchmark("link-waiting-messages/ours", &waitingInPort)->Iterations(1);
    benchmark::RegisterBenchmark("link-waiting-messages/floor", &waitingInSocket)->Iterations(1);
    benchmark::RegisterBenchmark("link-death-noticed/ours", &deaths<PortWatch>, kPort)
        ->UseManualTime()
        ->Iterations(kDeaths);
    benchmark::RegisterBenchmark("link-death-noticed/floor", &deaths<SocketWatch>, kRaw)
        ->UseManualTime()
        ->Iterations(kDeaths);
}

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv, &registerCases);
}
