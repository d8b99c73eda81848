#include "Benchmarks/Support/SelectedPaths.h"
#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Foundation/Exception.h"
#include "QVFinderExtension/FinderSync.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What does the menu of a selection cost the extension itself, beside one look at each path and
// entries in plain structs?

namespace {

constexpr const char* kDrive = "/home/mia/Fennmoor Drive";

// Of the items that are selected.
using Paths = std::vector<std::string>(std::string_view drive, std::size_t count);

std::vector<std::string> pathsFor(const benchmark::State& state, Paths* pathsOn) {
    return pathsOn(kDrive, static_cast<std::size_t>(state.range(0)));
}

// The selection as it comes from a file manager.
NS::Ref<NS::Data> bytesOf(const std::vector<std::string>& paths) {
    std::string bytes;
    for (const std::string& path : paths) {
        bytes.append(path).push_back('\0');
    }
    return NS::Data::dataWithBytes(NS::bytesOf(bytes));
}

NS::Ref<FI::Selection> urlsOf(const std::vector<std::string>& paths) {
    std::vector<NS::Ref<NS::Object>> urls;
    urls.reserve(paths.size());
    for (const std::string& path : paths) {
        urls.emplace_back(NS::URL::fileURLWithFileSystemRepresentation(path));
    }
    return FI::Selection::selectionWithURLs(NS::make<NS::Array>(std::move(urls)));
}

NS::Ref<FinderSync> extensionOnDrive() {
    auto extension = NS::make<FinderSync>();
    extension->setDrivePath(NS::str(kDrive));
    return extension;
}

void makeMenu(FinderSync& extension, std::size_t selected) {
    const auto menu = extension.menuForMenuKind(FI::MenuKind::kContextualMenuForItems);
    if (menu->itemArray().size() != (selected == 1 ? 3U : 1U)) {
        NS::Exception::raise(NS::kGenericException, "the menu is not that of items on the drive");
    }
}

// Each time for a selection that is handed over anew.
void menu(benchmark::State& state, Paths* pathsOn) {
    const auto controller = FI::FinderSyncController::defaultController();
    const auto extension = extensionOnDrive();
    const auto paths = pathsFor(state, pathsOn);
    const auto bytes = bytesOf(paths);
    for (auto step : state) {
        controller->setSelection(FI::Selection::selectionWithPaths(bytes));
        makeMenu(extension, paths.size());
    }
    controller->setSelection(nullptr);
}

// The same of URLs that have told their paths before.
void menuOfURLs(benchmark::State& state, Paths* pathsOn) {
    const auto controller = FI::FinderSyncController::defaultController();
    const auto extension = extensionOnDrive();
    const auto paths = pathsFor(state, pathsOn);
    controller->setSelection(urlsOf(paths));
    makeMenu(extension, paths.size());
    for (auto step : state) {
        makeMenu(extension, paths.size());
    }
    controller->setSelection(nullptr);
}

struct Verdict {
    bool hasSpecial = false;
    bool hasInTrash = false;
    bool hasOutside = false;
};

// One pass: whether each path begins with the drive's, and which folder of the drive it is in, told
// by the component behind that and by whether another one follows.
Verdict look(std::string_view drive, const std::vector<std::string>& paths) {
    Verdict verdict;
    for (const std::string_view path : paths) {
        if (!path.starts_with(drive)) {
            continue;
        }
        const std::string_view rest = path.substr(drive.size());
        const std::size_t start = rest.find_first_not_of('/');
        const std::size_t end = rest.find('/', start);
        const std::string_view top = rest.substr(start, end - start);
        const bool isTrash = top == "Trash";
        verdict.hasSpecial = verdict.hasSpecial || isTrash || top == "Shared Folders";
        verdict.hasInTrash = verdict.hasInTrash || (isTrash && end != std::string_view::npos);
        verdict.hasOutside = verdict.hasOutside || !isTrash;
    }
    return verdict;
}

struct Entry {
    std::string title;
    std::string action;
    bool isEnabled = true;
};

std::vector<Entry> entriesFor(const Verdict& verdict, std::size_t selected) {
    std::vector<Entry> entries;
    if (selected == 1 && !verdict.hasSpecial) {
        entries.push_back({"QV: Share", "shareItem:"});
        entries.push_back({"QV: Show Properties", "showProps"});
    }
    if (verdict.hasOutside && !verdict.hasInTrash && !verdict.hasSpecial) {
        entries.push_back({"QV: Move To Trash", "moveToTrash"});
    }
    if (verdict.hasInTrash && !verdict.hasOutside) {
        entries.push_back({"QV: Restore", "restore"});
        entries.push_back({"QV: Delete", "delete"});
    }
    return entries;
}

void onePass(benchmark::State& state, Paths* pathsOn) {
    const auto paths = pathsFor(state, pathsOn);
    for (auto step : state) {
        const std::vector<Entry> entries = entriesFor(look(kDrive, paths), paths.size());
        benchmark::DoNotOptimize(entries.data());
        if (entries.size() != (paths.size() == 1 ? 3U : 1U)) {
            state.SkipWithError("the entries are not those of items on the drive");
        }
    }
}

void ofEachSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->RangeMultiplier(10)->Range(1'000, 1'000'000)->UseRealTime();
}

using Benchmarks::foundPaths;
using Benchmarks::selectedPaths;

BENCHMARK_CAPTURE(menu, ours, &selectedPaths)->Name("menu/ours")->Apply(ofEachSize);
BENCHMARK_CAPTURE(onePass, floor, &selectedPaths)->Name("menu/floor")->Apply(ofEachSize);
BENCHMARK_CAPTURE(menu, ours, &foundPaths)->Name("menu-of-found-items/ours")->Apply(ofEachSize);
BENCHMARK_CAPTURE(onePass, floor, &foundPaths)
    ->Name("menu-of-found-items/floor")
    ->Apply(ofEachSize);
BENCHMARK_CAPTURE(menuOfURLs, ours, &selectedPaths)->Name("menu-of-urls/ours")->Apply(ofEachSize);
BENCHMARK_CAPTURE(onePass, floor, &selectedPaths)->Name("menu-of-urls/floor")->Apply(ofEachSize);

} // namespace
