#include "Benchmarks/ResidentMemory.h"
#include "Benchmarks/Support/FlatArchive.h"
#include "Benchmarks/Support/ListWalk.h"
#include "Benchmarks/Support/Listings.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/String.h"
#include <Listing.pb.h>

#include <benchmark/benchmark.h>
#include <plist/plist.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

// What does it cost to archive a folder's listing and to restore it, beside the least that the same
// bytes cost, beside another library for the same format, and beside structs on a wire?

namespace {

using Benchmarks::File;

void check(bool holds, const char* what) {
    if (!holds) {
        NS::Exception::raise(NS::kGenericException, what);
    }
}

// One listing in every form, made once for each size.
struct Listing {
    std::vector<File> files;
    NS::Ref<QVFolderListItem> record;
    NS::Ref<NS::Data> archive;

    explicit Listing(std::size_t count)
        : files(Benchmarks::filesOf(count)), record(Benchmarks::listingWith(files, 0)),
          archive(NS::KeyedArchiver::archivedDataWithRootObject(record)) {}
};

const Listing& listingOf(const benchmark::State& state) {
    static std::map<std::size_t, Listing> listings;
    const auto count = static_cast<std::size_t>(state.range(0));
    return listings.try_emplace(count, count).first->second;
}

NS::RefPtr<NS::Object> restored(NS::Bytes archive) {
    return NS::KeyedUnarchiver::unarchiveObjectWithData(*NS::Data::dataWithBytes(archive));
}

// Whether the memory of one listing is there for the next, or has gone back to the system, so that
// each is made as the first one of a process is. For a large one that matters: some allocators keep
// memory and some do not, and one of them does so in every second process.
enum class Memory { kKept, kGivenBack };

// What the loop's body makes is let go of outside of the measured time.
template <class Make>
void measureMaking(benchmark::State& state, Make&& make, Memory memory = Memory::kKept) {
    const auto settle = [memory] {
        if (memory == Memory::kGivenBack) {
            Benchmarks::giveBackMemory();
        }
    };
    // A first one apart: memory that was free for a while is found anew by the machine below a
    // virtual one, at many times the cost, and whoever comes first would pay.
    { [[maybe_unused]] const auto first = make(); }
    settle();
    for (auto step : state) {
        auto made = make();
        benchmark::DoNotOptimize(made);
        state.PauseTiming();
        { [[maybe_unused]] const auto ended = std::move(made); }
        settle();
        state.ResumeTiming();
    }
}

void decodeOurs(benchmark::State& state, Memory memory) {
    const Listing& listing = listingOf(state);
    measureMaking(
        state, [&] { return NS::KeyedUnarchiver::unarchiveObjectWithData(*listing.archive); },
        memory);
}

void decodeFloor(benchmark::State& state) {
    const Listing& listing = listingOf(state);
    check(Benchmarks::walkedSum(listing.archive->bytes()) != 0, "the walk finds damage");
    for (auto step : state) {
        benchmark::DoNotOptimize(Benchmarks::walkedSum(listing.archive->bytes()));
    }
}

void decodeFloorOnce(benchmark::State& state) {
    const Listing& listing = listingOf(state);
    measureMaking(
        state, [&] { return Benchmarks::walkedSum(listing.archive->bytes()); }, Memory::kGivenBack);
}

// A tree of libplist's nodes.
struct PlistTree {
    explicit PlistTree(NS::Bytes list) {
        plist_from_bin(NS::charactersOf(list).data(), static_cast<std::uint32_t>(list.size()),
                       &root);
        check(root != nullptr, "libplist does not read it");
    }
    ~PlistTree() { plist_free(root); }
    PlistTree(PlistTree&& other) noexcept : root(std::exchange(other.root, nullptr)) {}
    PlistTree(const PlistTree&) = delete;
    PlistTree& operator=(const PlistTree&) = delete;
    PlistTree& operator=(PlistTree&&) = delete;

    plist_t root = nullptr;
};

// Its bytes of a tree.
struct PlistBytes {
    explicit PlistBytes(const PlistTree& tree) {
        plist_to_bin(tree.root, &bytes, &length);
        check(length != 0, "libplist does not write it");
    }
    ~PlistBytes() { plist_to_bin_free(bytes); }
    PlistBytes(PlistBytes&& other) noexcept
        : bytes(std::exchange(other.bytes, nullptr)), length(other.length) {}
    PlistBytes(const PlistBytes&) = delete;
    PlistBytes& operator=(const PlistBytes&) = delete;
    PlistBytes& operator=(PlistBytes&&) = delete;

    char* bytes = nullptr;
    std::uint32_t length = 0;
};

void decodePlist(benchmark::State& state, Memory memory) {
    const Listing& listing = listingOf(state);
    measureMaking(
        state, [&] { return PlistTree(listing.archive->bytes()); }, memory);
}

Benchmarks::Messages::Listing messageOf(const std::vector<File>& files) {
    Benchmarks::Messages::Listing message;
    message.set_update_time(Benchmarks::kUpdateTime);
    message.set_name(Benchmarks::kListingText);
    message.set_parent(Benchmarks::kListingText);
    message.set_response_type(Benchmarks::kListingText);
    message.mutable_files()->Reserve(static_cast<int>(files.size()));
    for (const File& file : files) {
        auto& entry = *message.add_files();
        entry.set_identifier(file.identifier);
        entry.set_name(file.name);
        entry.set_size(file.size);
        entry.set_compression(file.compression);
        entry.set_modified(static_cast<double>(file.modified - Benchmarks::kReferenceDate));
    }
    return message;
}

void decodeProtobuf(benchmark::State& state, Memory memory) {
    const std::string bytes = messageOf(listingOf(state).files).SerializeAsString();
    measureMaking(
        state,
        [&] {
            Benchmarks::Messages::Listing message;
            check(message.ParseFromString(bytes), "protobuf does not read it");
            return message;
        },
        memory);
}

void encodeOurs(benchmark::State& state) {
    const Listing& listing = listingOf(state);
    measureMaking(state,
                  [&] { return NS::KeyedArchiver::archivedDataWithRootObject(listing.record); });
}

// The floor's bytes must be an archive of the same listing, no shorter and no longer.
void encodeFloor(benchmark::State& state) {
    const Listing& listing = listingOf(state);
    {
        const Benchmarks::FlatArchive flat(listing.files);
        const auto again = NS::KeyedArchiver::archivedDataWithRootObject(restored(flat.bytes()));
        check(flat.bytes().size() == listing.archive->length(), "the floor's length differs");
        check(again->isEqual(listing.archive.get()), "the floor's listing differs");
    }
    measureMaking(state, [&] { return Benchmarks::FlatArchive(listing.files); });
}

void encodePlist(benchmark::State& state) {
    const PlistTree tree(listingOf(state).archive->bytes());
    measureMaking(state, [&] { return PlistBytes(tree); });
}

void encodeProtobuf(benchmark::State& state) {
    const auto message = messageOf(listingOf(state).files);
    measureMaking(state, [&] { return message.SerializeAsString(); });
}

// What a message carries most often: one path.
NS::Ref<NS::String> path() {
    return NS::str("/Documents/Holidays 2026/holiday picture 0001.jpg");
}

void encodePathOurs(benchmark::State& state) {
    const auto text = path();
    for (auto step : state) {
        benchmark::DoNotOptimize(NS::KeyedArchiver::archivedDataWithRootObject(text));
    }
}

void encodePathPlist(benchmark::State& state) {
    const PlistTree tree(NS::KeyedArchiver::archivedDataWithRootObject(path())->bytes());
    for (auto step : state) {
        benchmark::DoNotOptimize(PlistBytes(tree));
    }
}

void decodePathOurs(benchmark::State& state) {
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(path());
    check(restored(archive->bytes())->isEqual(path().get()), "the path differs");
    for (auto step : state) {
        benchmark::DoNotOptimize(NS::KeyedUnarchiver::unarchiveObjectWithData(*archive));
    }
}

void decodePathPlist(benchmark::State& state) {
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(path());
    for (auto step : state) {
        benchmark::DoNotOptimize(PlistTree(archive->bytes()));
    }
}

void ofEachSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(1'000, 1'000'000)->Unit(benchmark::kMicrosecond);
}

// Its tree of a million files takes gigabytes, and that of 100,000, three hundred megabytes, has
// processes of its own.
void ofTheSmaller(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(1'000, 10'000)->Unit(benchmark::kMicrosecond);
}

void ofOneSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(100'000)->Unit(benchmark::kMicrosecond);
}

// Its time grows with the square of the size.
void ofTheSmallest(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1'000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(decodeOurs, kept, Memory::kKept)->Name("archive-decode/ours")->Apply(ofEachSize);
BENCHMARK(decodeFloor)->Name("archive-decode/floor")->Apply(ofEachSize);
BENCHMARK_CAPTURE(decodePlist, kept, Memory::kKept)
    ->Name("archive-decode/libplist")
    ->Apply(ofTheSmaller);
BENCHMARK_CAPTURE(decodeProtobuf, kept, Memory::kKept)
    ->Name("archive-decode/protobuf")
    ->Apply(ofEachSize);
BENCHMARK_CAPTURE(decodeOurs, once, Memory::kGivenBack)
    ->Name("archive-decode-once/ours")
    ->Apply(ofOneSize);
BENCHMARK(decodeFloorOnce)->Name("archive-decode-once/floor")->Apply(ofOneSize);
BENCHMARK_CAPTURE(decodePlist, once, Memory::kGivenBack)
    ->Name("archive-decode-once/libplist")
    ->Apply(ofOneSize);
BENCHMARK_CAPTURE(decodeProtobuf, once, Memory::kGivenBack)
    ->Name("archive-decode-once/protobuf")
    ->Apply(ofOneSize);
BENCHMARK_CAPTURE(decodeOurs, again, Memory::kKept)
    ->Name("archive-decode-again/ours")
    ->Apply(ofOneSize);
BENCHMARK_CAPTURE(decodePlist, again, Memory::kKept)
    ->Name("archive-decode-again/libplist")
    ->Apply(ofOneSize);
BENCHMARK(encodeOurs)->Name("archive-encode/ours")->Apply(ofEachSize);
BENCHMARK(encodeFloor)->Name("archive-encode/floor")->Apply(ofEachSize);
BENCHMARK(encodePlist)->Name("archive-encode/libplist")->Apply(ofTheSmallest);
BENCHMARK(encodeProtobuf)->Name("archive-encode/protobuf")->Apply(ofEachSize);
BENCHMARK(encodePathOurs)->Name("archive-path-encode/ours");
BENCHMARK(encodePathPlist)->Name("archive-path-encode/libplist");
BENCHMARK(decodePathOurs)->Name("archive-path-decode/ours");
BENCHMARK(decodePathPlist)->Name("archive-path-decode/libplist");

} // namespace
