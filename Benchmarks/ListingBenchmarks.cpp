#include "Benchmarks/ResidentMemory.h"
#include "Benchmarks/Support/Listings.h"
#include "Platform/Foundation/Exception.h"
#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/QVFolderListItem.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

// What does an entry of a folder listing cost, and does it cost the same in the listing of the
// largest drive? Beside it, what plain structs cost that are made of the same reply as a tree of
// JSON, and one pass over the names that an operation has to look at.

namespace {

using Benchmarks::File;
using Benchmarks::MemoryMeter;

constexpr const char* kNotAscii = " \u00DCbersicht.jpeg";

void check(bool holds, const char* what) {
    if (!holds) {
        NS::Exception::raise(NS::kGenericException, what);
    }
}

std::size_t countOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

NS::Ref<NS::Dictionary> replyOf(const benchmark::State& state) {
    return Benchmarks::replyWith(Benchmarks::filesOf(countOf(state)), countOf(state) / 100);
}

// Made once for each size.
NS::Ref<QVFolderListItem> listingOf(const benchmark::State& state,
                                    const std::string& ending = ".jpeg") {
    static std::map<std::pair<std::size_t, std::string>, NS::Ref<QVFolderListItem>> listings;
    const std::pair key(countOf(state), ending);
    const auto known = listings.find(key);
    if (known != listings.end()) {
        return known->second;
    }
    const auto files = Benchmarks::filesOf(countOf(state), ending.c_str());
    return listings.emplace(key, Benchmarks::listingWith(files, 0)).first->second;
}

NS::RefPtr<NS::MutableArray> filesIn(const QVFolderListItem& listing) {
    return NS::cast<NS::MutableArray>(listing.files());
}

void map(benchmark::State& state) {
    const auto source = replyOf(state);
    double bytes = 0;
    for (auto step : state) {
        state.PauseTiming();
        const MemoryMeter memory;
        state.ResumeTiming();
        auto item = QVFolderListItem::itemWithDict_error(*source, nullptr);
        state.PauseTiming();
        bytes = memory.bytesPer(countOf(state));
        item = nullptr;
        state.ResumeTiming();
    }
    state.counters["resident B/entry"] = bytes;
}

nlohmann::json jsonOf(const char* identifierKey, const std::vector<File>& files) {
    nlohmann::json list = nlohmann::json::array();
    for (const File& file : files) {
        list.push_back({
            {identifierKey,  file.identifier              },
            {"Name",         file.name                    },
            {"DateModified", std::to_string(file.modified)},
            {"Size",         std::to_string(file.size)    }
        });
    }
    return list;
}

std::vector<File> structsOf(const nlohmann::json& list, const char* identifierKey) {
    std::vector<File> files;
    files.reserve(list.size());
    for (const nlohmann::json& entry : list) {
        files.push_back({entry.at(identifierKey).get<std::string>(),
                         entry.at("Name").get<std::string>(),
                         std::stoll(entry.at("Size").get_ref<const std::string&>()), 0,
                         std::stoll(entry.at("DateModified").get_ref<const std::string&>())});
    }
    return files;
}

// Of the same reply, in the same tree of values, without the decomposition of the names.
void mapJson(benchmark::State& state) {
    const auto files = jsonOf("FileId", Benchmarks::filesOf(countOf(state)));
    const auto folders = jsonOf("FolderID", Benchmarks::filesOf(countOf(state) / 100, ""));
    for (auto step : state) {
        auto folderStructs = structsOf(folders, "FolderID");
        auto fileStructs = structsOf(files, "FileId");
        benchmark::DoNotOptimize(folderStructs);
        benchmark::DoNotOptimize(fileStructs);
        state.PauseTiming();
        folderStructs = {};
        fileStructs = {};
        state.ResumeTiming();
    }
}

// As long as all others and found nowhere: every name is looked at up to where it differs.
NS::Ref<NS::String> missingName() {
    return NS::str("holiday 9999999.jpeg");
}

// The names of a listing's files where they stand, in one list: what a pass has to look at.
struct Names {
    explicit Names(const QVFolderListItem& listing) {
        for (const NS::Ref<NS::Object>& file : *filesIn(listing)) {
            objects.push_back(NS::cast<NS::String>(NS::cast<QVFileItem>(file)->name()));
        }
    }

    std::vector<NS::RefPtr<NS::String>> objects;
};

char lowered(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool equalsLowered(std::string_view text, std::string_view lowercase) noexcept {
    return std::ranges::equal(text, lowercase, {}, lowered);
}

void itemNamed(benchmark::State& state) {
    const auto listing = listingOf(state);
    const auto missing = missingName();
    for (auto step : state) {
        benchmark::DoNotOptimize(listing->itemNamed(*missing));
    }
}

void itemNamedFloor(benchmark::State& state) {
    const Names names(*listingOf(state));
    const auto missing = missingName();
    for (auto step : state) {
        benchmark::DoNotOptimize(std::ranges::find_if(names.objects, [&](const auto& name) {
            return equalsLowered(name->ascii(), missing->ascii());
        }));
    }
}

void itemNamedWide(benchmark::State& state) {
    const auto listing = listingOf(state, kNotAscii);
    const auto missing = missingName();
    for (auto step : state) {
        benchmark::DoNotOptimize(listing->itemNamed(*missing));
    }
}

void itemNames(benchmark::State& state) {
    const auto listing = listingOf(state);
    for (auto step : state) {
        auto names = NS::RefPtr<NS::MutableArray>(listing->itemNames());
        state.PauseTiming();
        names = nullptr;
        state.ResumeTiming();
    }
}

void itemNamesFloor(benchmark::State& state) {
    const Names names(*listingOf(state));
    for (auto step : state) {
        auto copy = names.objects;
        benchmark::DoNotOptimize(copy);
        state.PauseTiming();
        copy = {};
        state.ResumeTiming();
    }
}

// The last file is put in once more, which takes it out of its place.
void insert(benchmark::State& state) {
    const auto listing = listingOf(state);
    const auto files = filesIn(*listing);
    const auto last = files->objectAtIndex(files->count() - 1);
    for (auto step : state) {
        listing->insertItem(last);
    }
}

// Whoever has this text for a name gives way, and comes back at the end.
template <class Position>
void replaceInNames(benchmark::State& state, Position&& position) {
    auto names = Names(*listingOf(state)).objects;
    for (auto step : state) {
        const auto wanted = names[position(names)];
        std::erase_if(names, [&](const auto& name) { return name->ascii() == wanted->ascii(); });
        names.push_back(wanted);
    }
}

void insertFloor(benchmark::State& state) {
    replaceInNames(state, [](const auto& names) { return names.size() - 1; });
}

// A listing from nothing, entry by entry.
void fill(benchmark::State& state) {
    const auto entries = listingOf(state)->combinedItems();
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
        bytes = memory.bytesPer(countOf(state));
        item = NS::make<QVFolderListItem>();
        state.ResumeTiming();
    }
    state.counters["resident B/entry"] = bytes;
}

// The first file goes, so that all others move up, and comes back at the end.
void remove(benchmark::State& state) {
    const auto listing = listingOf(state);
    const auto files = filesIn(*listing);
    for (auto step : state) {
        const auto first = files->objectAtIndex(0);
        listing->removeItemNamed(
            static_cast<const NS::String&>(*NS::cast<QVFileItem>(first)->name()));
        files->addObject(first);
    }
}

void removeFloor(benchmark::State& state) {
    replaceInNames(state, [](const auto&) { return std::size_t{0}; });
}

void compare(benchmark::State& state) {
    const auto a = replyOf(state);
    const auto b = replyOf(state);
    for (auto step : state) {
        check(a->isEqual(b.get()), "the replies differ");
    }
}

void ofEachSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(1'000, 1'000'000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(map)->Name("reply-to-records/ours")->Apply(ofEachSize);
BENCHMARK(mapJson)->Name("reply-to-records/nlohmann-json")->Apply(ofEachSize);
BENCHMARK(itemNamed)->Name("listing-item-named/ours")->Apply(ofEachSize);
BENCHMARK(itemNamedFloor)->Name("listing-item-named/floor")->Apply(ofEachSize);
BENCHMARK(itemNamedWide)->Name("listing-item-named-not-ascii/ours")->Apply(ofEachSize);
BENCHMARK(itemNames)->Name("listing-item-names/ours")->Apply(ofEachSize);
BENCHMARK(itemNamesFloor)->Name("listing-item-names/floor")->Apply(ofEachSize);
BENCHMARK(insert)->Name("listing-insert-item/ours")->Apply(ofEachSize);
BENCHMARK(insertFloor)->Name("listing-insert-item/floor")->Apply(ofEachSize);
BENCHMARK(fill)->Name("listing-fill/ours")->Apply(ofEachSize);
BENCHMARK(remove)->Name("listing-remove-item-named/ours")->Apply(ofEachSize);
BENCHMARK(removeFloor)->Name("listing-remove-item-named/floor")->Apply(ofEachSize);
BENCHMARK(compare)->Name("reply-compare/ours")->Apply(ofEachSize);

} // namespace
