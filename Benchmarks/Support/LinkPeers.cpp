#include "Benchmarks/Support/LinkPeers.h"

#include <benchmark/benchmark.h>

#include <exception>
#include <iostream>
#include <string>
#include <string_view>

namespace Benchmarks {

namespace {

const TransportKind* const kKinds[] = {
    &kRaw, &kPort, &kLink, &kBus, &kZeroMQ, &kRawFile, &kPortPayload, &kPortClients, &kRawClients};

void serve(std::string_view name, const std::filesystem::path& folder, std::size_t number) {
    for (const TransportKind* const kind : kKinds) {
        if (name == kind->name) {
            kind->serve(folder, number);
        }
    }
}

} // namespace

LinkPeers::LinkPeers(const TransportKind& kind, const std::filesystem::path& folder,
                     std::size_t number) {
    if (&kind == &kBus) {
        daemon_.emplace(folder);
    }
    peer_.emplace(Peer::ownProgram(),
                  std::vector<std::string>{kPeerOption, kind.name, folder, std::to_string(number)});
}

std::vector<int> LinkPeers::processes() const {
    std::vector<int> found{peer_->process()};
    if (daemon_) {
        found.push_back(daemon_->process());
    }
    return found;
}

int runBenchmarks(int argc, char** argv, void (*registerCases)()) {
    try {
        if (argc == 5 && std::string_view(argv[1]) == kPeerOption) {
            serve(argv[2], argv[3], std::stoul(argv[4]));
            return 0;
        }
        benchmark::Initialize(&argc, argv);
        registerCases();
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::cerr << argv[0] << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}

} // namespace Benchmarks
