// What does a message between the extension and its host cost, and what is left of that when the
// bytes only went through the kernel? Both processes run on one processor, and their time is the
// processor time that they and whoever stands between them take.

#include "Benchmarks/Support/LinkPeers.h"
#include "Benchmarks/Support/ProcessorTime.h"
#include "Benchmarks/Support/ScratchFolder.h"
#include "Benchmarks/Support/Transport.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace Benchmarks;

// Messages between two looks at the clock, and as many as wait in any transport without a loss.
constexpr std::int64_t kMessages = 64;

// Per message, with an answer to each `batch` of them.
void exchange(benchmark::State& state, const TransportKind& kind, std::int64_t batch) {
    const ScratchFolder folder;
    const LinkPeers peers(kind, folder.path(), static_cast<std::size_t>(batch));
    const auto transport = kind.connect(folder.path(), static_cast<std::size_t>(batch));
    ProcessorTime time(peers.processes());
    while (state.KeepRunningBatch(kMessages)) {
        for (std::int64_t i = 1; i <= kMessages; ++i) {
            transport->post();
            if (i % batch == 0) {
                transport->awaitAnswer();
            }
        }
        state.SetIterationTime(time.lap());
    }
}

void add(const std::string& name, const TransportKind& kind, std::int64_t batch) {
    benchmark::RegisterBenchmark(name.c_str(), [&kind, batch](benchmark::State& state) {
        exchange(state, kind, batch);
    })->UseManualTime();
}

void addAll(const std::string& path, const TransportKind& ours, std::int64_t batch) {
    add(path + "/ours", ours, batch);
    add(path + "/floor", kRaw, batch);
    add(path + "/sd-bus", kBus, batch);
    add(path + "/zeromq", kZeroMQ, batch);
}

void registerCases() {
    addAll("link-small-message", kPort, kMessages);
    addAll("link-archived-path", kLink, kMessages);
    addAll("link-latency", kPort, 1);
}

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv, &registerCases);
}
