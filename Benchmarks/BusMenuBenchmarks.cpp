#include "Benchmarks/Support/BusDaemon.h"
#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/RawBusCall.h"
#include "Benchmarks/Support/ScratchFolder.h"
#include "Benchmarks/Support/SelectedPaths.h"
#include "Platform/Finder/FinderSyncController.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/FinderSync.h"
#include "Shell/Client/FinderClient.h"
#include "Shell/FinderService.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// How long does a file manager wait for a menu, from the paths that it has to the entries that it
// shows? Beside it a call over the same bus that carries the same paths as bytes and does nothing.
// The bus, who asks and who answers share their processors.

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 30s;
constexpr std::string_view kServeMenus = "--serve-menus";
constexpr std::string_view kServeCalls = "--serve-calls";

// The extension's process, without a host: it knows its drive from the start.
[[noreturn]] void serveMenus(const char* drive) {
    const auto extension = NS::make<FinderSync>();
    extension->setDrivePath(NS::str(drive));
    FI::FinderSyncController::defaultController()->setDirectoryURLs(
        NS::Set::setWithObject(NS::URL::fileURLWithPath(NS::str(drive))));
    Shell::FinderService service(extension, [&extension] {
        return std::vector<NS::RefPtr<NS::Object>>{extension->storageInfo()};
    });
    if (!service.start()) {
        std::exit(EXIT_FAILURE);
    }
    Benchmarks::Peer::sayReady();
    NS::RunLoop::currentRunLoop()->run();
    std::exit(EXIT_SUCCESS);
}

// The bus, a drive, and the programs that answer. Made when the first benchmark runs.
class Desktop {
  public:
    static Desktop& shared() {
        static Desktop desktop;
        return desktop;
    }

    std::string drive() const { return drive_; }
    Shell::FinderClient& client() noexcept { return client_; }
    Benchmarks::RawBusCall& calls() noexcept { return calls_; }

  private:
    Desktop() {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (!client_.isPresent()) {
            if (std::chrono::steady_clock::now() > deadline) {
                throw std::runtime_error("the extension does not come up");
            }
            std::this_thread::sleep_for(1ms);
            client_.serve();
        }
    }

    // This program as one of the servers.
    Benchmarks::Peer started(std::string_view role) {
        return {
            Benchmarks::Peer::ownProgram(), {std::string(role), drive_}
        };
    }

    Benchmarks::ScratchFolder folder_;
    Benchmarks::BusDaemon bus_{folder_.path()};
    std::string drive_ = [this] {
        const std::filesystem::path drive = folder_.path() / "Drive";
        std::filesystem::create_directories(drive / "Pictures");
        return drive.string();
    }();
    Benchmarks::Peer callsServer_ = started(kServeCalls);
    Benchmarks::Peer menuServer_ = started(kServeMenus);
    Benchmarks::RawBusCall calls_;
    Shell::FinderClient client_;
};

std::vector<std::string> pathsFor(const benchmark::State& state) {
    return Benchmarks::selectedPaths(Desktop::shared().drive(),
                                     static_cast<std::size_t>(state.range(0)));
}

void menu(benchmark::State& state) {
    Desktop& desktop = Desktop::shared();
    const Shell::Place place{pathsFor(state), desktop.drive() + "/Pictures"};
    const std::size_t entries = place.items.size() == 1 ? 3 : 1;
    for (auto step : state) {
        const auto answer = desktop.client().menu(Shell::MenuKind::kItems, place, kPatience);
        if (!answer.menu || answer.menu->entries.size() != entries) {
            state.SkipWithError("there is no menu");
        }
    }
}

void bytes(benchmark::State& state) {
    Desktop& desktop = Desktop::shared();
    std::string paths;
    for (const std::string& path : pathsFor(state)) {
        paths.append(path).push_back('\0');
    }
    for (auto step : state) {
        if (!desktop.calls().carryBytes(paths)) {
            state.SkipWithError("there is no answer");
        }
    }
}

void texts(benchmark::State& state) {
    Desktop& desktop = Desktop::shared();
    const std::vector<std::string> paths = pathsFor(state);
    for (auto step : state) {
        if (!desktop.calls().carryTexts(paths)) {
            state.SkipWithError("there is no answer");
        }
    }
}

// Beyond that a selection does not fit an array of the bus.
void ofEachSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->RangeMultiplier(10)->Range(1'000, 100'000)->UseRealTime();
}

BENCHMARK(menu)->Name("menu-over-the-bus/ours")->Apply(ofEachSize);
BENCHMARK(bytes)->Name("menu-over-the-bus/floor")->Apply(ofEachSize);
BENCHMARK(texts)->Name("menu-over-the-bus/sd-bus-texts")->Apply(ofEachSize);

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && argv[1] == kServeMenus) {
        serveMenus(argv[2]);
    }
    try {
        if (argc == 3 && argv[1] == kServeCalls) {
            Benchmarks::RawBusCall::serve();
        }
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::cerr << argv[0] << ": " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
