#include "Benchmarks/Names.h"
#include "Benchmarks/ResidentMemory.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Number.h"
#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/QVFolderListItem.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// What does an entry of a folder listing cost, and does it cost the same in the listing of the
// largest drive? A listing has a folder for each hundred files.

namespace {

using Benchmarks::MemoryMeter;

std::size_t filesOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

std::size_t entriesOf(const benchmark::State& state) {
    return filesOf(state) + filesOf(state) / 100;
}

std::string numbered(const char* before, std::size_t number, const char* behind) {
    std::string digits = std::to_string(number);
    digits.insert(0, digits.size() < 7 ? 7 - digits.size() : 0, '0');
    return before + digits + behind;
}

// One entry of a reply, as the service sends it: every value a text.
NS::Ref<NS::Object> entry(const char* identifierKey, std::size_t number, const char* ending) {
    static const NS::Ref<NS::String> kName = NS::str("Name");
    static const NS::Ref<NS::String> kDate = NS::str("DateModified");
    static const NS::Ref<NS::String> kSize = NS::str("Size");
    std::vector<NS::Dictionary::Entry> entries;
    entries.reserve(4);
    entries.emplace_back(NS::str(identifierKey), NS::str(numbered("8c2e41f7", number, "")));
    entries.emplace_back(kName, NS::str(numbered("Holiday ", number, ending)));
    entries.emplace_back(kDate, NS::str(std::to_string(1'500'000'000 + number)));
    entries.emplace_back(kSize, NS::str(std::to_string(number * 1021)));
    return NS::make<NS::Dictionary>(std::move(entries));
}

NS::Ref<NS::Object> entries(const char* identifierKey, std::size_t count, const char* ending) {
    std::vector<NS::Ref<NS::Object>> list;
    list.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        list.push_back(entry(identifierKey, i, ending));
    }
    return NS::make<NS::Array>(std::move(list));
}

NS::Ref<NS::Dictionary> reply(std::size_t files, const char* ending = ".jpeg") {
    auto result = NS::make<NS::MutableDictionary>();
    for (const char* const key : {"DirUpdateTime", "Name", "ParentFolderID", "ResponseType"}) {
        result->setObject_forKey(NS::str("1500000000"), key);
    }
    result->setObject_forKey(entries("FolderID", files / 100, ""), "Folders");
    result->setObject_forKey(entries("FileId", files, ending), "Files");
    return result;
}

NS::Ref<QVFolderListItem> listing(std::size_t files, const char* ending = ".jpeg") {
    const auto item = QVFolderListItem::itemWithDict_error(*reply(files, ending), nullptr);
    if (!item) {
        NS::Exception::raise(NS::kGenericException, "the reply makes no listing");
    }
    return NS::Ref<QVFolderListItem>(*item);
}

// What each entry takes of the time.
void countTime(benchmark::State& state) {
    state.counters["s/entry"] = benchmark::Counter(static_cast<double>(entriesOf(state)),
                                                   benchmark::Counter::kIsIterationInvariantRate |
                                                       benchmark::Counter::kInvert);
}

void map(benchmark::State& state) {
    const auto source = reply(filesOf(state));
    double bytes = 0;
    for (auto step : state) {
        state.PauseTiming();
        const MemoryMeter memory;
        state.ResumeTiming();
        auto item = QVFolderListItem::itemWithDict_error(*source, nullptr);
        state.PauseTiming();
        bytes = memory.bytesPer(entriesOf(state));
        item = nullptr;
        state.ResumeTiming();
    }
    countTime(state);
    state.counters["resident B/entry"] = bytes;
}

void archive(benchmark::State& state) {
    const auto item = listing(filesOf(state));
    double bytes = 0;
    for (auto step : state) {
        const auto data = NS::KeyedArchiver::archivedDataWithRootObject(item);
        bytes = static_cast<double>(data->length()) / static_cast<double>(entriesOf(state));
    }
    countTime(state);
    state.counters["archive B/entry"] = bytes;
}

void restore(benchmark::State& state) {
    const auto data = NS::KeyedArchiver::archivedDataWithRootObject(listing(filesOf(state)));
    double bytes = 0;
    for (auto step : state) {
        state.PauseTiming();
        const MemoryMeter memory;
        state.ResumeTiming();
        auto item = NS::KeyedUnarchiver::unarchiveObjectWithData(*data);
        state.PauseTiming();
        bytes = memory.bytesPer(entriesOf(state));
        item = nullptr;
        state.ResumeTiming();
    }
    countTime(state);
    state.counters["resident B/entry"] = bytes;
    state.counters["resident/archive"] =
        bytes * static_cast<double>(entriesOf(state)) / static_cast<double>(data->length());
}

// Every entry is looked at: nothing has the name.
void findIn(benchmark::State& state, const NS::Ref<QVFolderListItem>& item) {
    const auto missing = NS::str("holiday 0000001.png");
    for (auto step : state) {
        benchmark::DoNotOptimize(item->itemNamed(*missing));
    }
    countTime(state);
}

void itemNamed(benchmark::State& state) {
    findIn(state, listing(filesOf(state)));
}

void itemNamedWide(benchmark::State& state) {
    findIn(state, listing(filesOf(state), " \u00DCbersicht.jpeg"));
}

// The last file is put in once more, which takes it out of its place.
void insert(benchmark::State& state) {
    const auto item = listing(filesOf(state));
    const auto files = NS::cast<NS::MutableArray>(item->files());
    const auto last = files->objectAtIndex(files->count() - 1);
    for (auto step : state) {
        item->insertItem(last);
    }
    countTime(state);
}

// A listing from nothing, entry by entry.
void fill(benchmark::State& state) {
    const auto entries = listing(filesOf(state))->combinedItems();
    double bytes = 0;
    for (auto step : state) {
        state.PauseTiming();
        const MemoryMeter memory;
        auto item = NS::make<QVFolderListItem>();
        state.ResumeTiming();
        for (const NS::Ref<NS::Object>& each : *entries) {
            item->insertItem(each);
        }
        state.PauseTiming();
        bytes = memory.bytesPer(entriesOf(state));
        item = NS::make<QVFolderListItem>();
        state.ResumeTiming();
    }
    countTime(state);
    state.counters["resident B/entry"] = bytes;
}

// The first file goes, so that all others move up, and comes back at the end.
void remove(benchmark::State& state) {
    const auto item = listing(filesOf(state));
    const auto files = NS::cast<NS::MutableArray>(item->files());
    for (auto step : state) {
        const auto first = files->objectAtIndex(0);
        item->removeItemNamed(static_cast<const NS::String&>(*NS::cast<QVFileItem>(first)->name()));
        files->addObject(first);
    }
    countTime(state);
}

void compare(benchmark::State& state) {
    const auto a = reply(filesOf(state));
    const auto b = reply(filesOf(state));
    for (auto step : state) {
        benchmark::DoNotOptimize(a->isEqual(b.get()));
    }
    countTime(state);
}

void ofEachSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

using namespace Benchmarks::Names;

BENCHMARK(map)->Name(kListingMap)->Apply(ofEachSize);
BENCHMARK(archive)->Name(kListingArchive)->Apply(ofEachSize);
BENCHMARK(restore)->Name(kListingRestore)->Apply(ofEachSize);
BENCHMARK(itemNamed)->Name(kListingItemNamed)->Apply(ofEachSize);
BENCHMARK(itemNamedWide)->Name(kListingItemNamedWide)->Apply(ofEachSize);
BENCHMARK(insert)->Name(kListingInsert)->Apply(ofEachSize);
BENCHMARK(fill)->Name(kListingFill)->Apply(ofEachSize);
BENCHMARK(remove)->Name(kListingRemove)->Apply(ofEachSize);
BENCHMARK(compare)->Name(kListingCompare)->Apply(ofEachSize);

} // namespace
