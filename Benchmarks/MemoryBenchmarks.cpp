#include "Benchmarks/ResidentMemory.h"
#include "Benchmarks/Support/Listings.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <benchmark/benchmark.h>

#include <cstddef>

// How much memory does a restored record take, beside the bytes of its archive? A program of its
// own: where others have left room in the heap, it would not be seen.

namespace {

constexpr const char* kResident = "resident B/record";

std::size_t countOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

NS::Ref<NS::Data> archiveOf(const benchmark::State& state) {
    return NS::KeyedArchiver::archivedDataWithRootObject(
        Benchmarks::listingWith(Benchmarks::filesOf(countOf(state)), 0));
}

void restored(benchmark::State& state) {
    const auto archive = archiveOf(state);
    for (auto step : state) {
        const Benchmarks::MemoryMeter memory;
        const auto item = NS::KeyedUnarchiver::unarchiveObjectWithData(*archive);
        state.counters[kResident] = memory.bytesPer(countOf(state));
    }
}

void archived(benchmark::State& state) {
    const auto archive = archiveOf(state);
    for (auto step : state) {
        state.counters[kResident] =
            static_cast<double>(archive->length()) / static_cast<double>(countOf(state));
    }
}

BENCHMARK(restored)->Name("archive-resident-memory/ours")->Arg(100'000)->Iterations(1);
BENCHMARK(archived)->Name("archive-resident-memory/floor")->Arg(100'000)->Iterations(1);

} // namespace
