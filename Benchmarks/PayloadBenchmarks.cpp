// What does a large payload cost, from where the sender has it to where the other side has read all
// of its pages?

#include "Benchmarks/Support/LinkPeers.h"
#include "Benchmarks/Support/ProcessorTime.h"
#include "Benchmarks/Support/ScratchFolder.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace Benchmarks;

constexpr std::int64_t kMiB = 1 << 20;

void payload(benchmark::State& state, const TransportKind& kind) {
    const ScratchFolder folder;
    const auto length = static_cast<std::size_t>(state.range(0));
    const LinkPeers peers(kind, folder.path(), length);
    const auto transport = kind.connect(folder.path(), length);
    ProcessorTime time(peers.processes());
    for (auto step : state) {
        transport->post();
        transport->awaitAnswer();
        state.SetIterationTime(time.lap());
    }
}

void add(const std::string& name, const TransportKind& kind) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [&kind](benchmark::State& state) { payload(state, kind); })
        ->Arg(kMiB)
        ->Arg(16 * kMiB)
        ->UseManualTime();
}

void registerCases() {
    add("link-payload/ours", kPortPayload);
    add("link-payload/floor", kRawFile);
}

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv, &registerCases);
}
