#include "Benchmarks/Support/RawFolder.h"
#include "Benchmarks/Support/TemporaryFolder.h"
#include "CustomConsoleLogging/QVLogging.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>

// What does it cost to prune a logging folder to its newest entries?

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kKept = 18;

std::size_t entriesIn(const fs::path& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

// Each time another folder, filled anew, which takes longer than to prune it.
void measure(benchmark::State& state, const std::function<void(const fs::path&)>& prune) {
    using Clock = std::chrono::steady_clock;
    for (auto step : state) {
        const Benchmarks::TemporaryFolder folder(Benchmarks::kInMemory);
        Benchmarks::fillRaw(folder.path(), static_cast<std::size_t>(state.range(0)));
        const auto start = Clock::now();
        prune(folder.path());
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        if (entriesIn(folder.path()) != kKept) {
            state.SkipWithError("others than the newest entries are left");
        }
    }
}

void prune(benchmark::State& state) {
    const auto logging = NS::make<QVLogging>();
    measure(state, [&](const fs::path& folder) {
        logging->cleanupLogsFolder_maxItems(NS::str(folder.string()), kKept);
    });
}

void bareCalls(benchmark::State& state) {
    measure(state, [](const fs::path& folder) { Benchmarks::pruneRaw(folder, kKept); });
}

void ofEachSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(25)->RangeMultiplier(10)->Range(1'000, 100'000)->UseManualTime();
}

// Filling such a folder takes as long as all other measurements of it together.
void ofAMillion(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1'000'000)->Iterations(1)->Repetitions(1)->UseManualTime();
}

BENCHMARK(prune)->Name("pruning/ours")->Apply(ofEachSize);
BENCHMARK(prune)->Name("pruning/ours")->Apply(ofAMillion);
BENCHMARK(bareCalls)->Name("pruning/floor")->Apply(ofEachSize);
BENCHMARK(bareCalls)->Name("pruning/floor")->Apply(ofAMillion);

} // namespace
