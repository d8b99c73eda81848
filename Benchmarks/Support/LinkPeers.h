#pragma once

#include "Benchmarks/Support/BusDaemon.h"
#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/Transport.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

namespace Benchmarks {

// The other side of a transport, and the daemon between the two where it takes one.
class LinkPeers {
  public:
    LinkPeers(const TransportKind& kind, const std::filesystem::path& folder, std::size_t number);

    Peer& peer() noexcept { return *peer_; }
    std::vector<int> processes() const;

  private:
    std::optional<BusDaemon> daemon_;
    std::optional<Peer> peer_;
};

// The main function of a program of benchmarks: is the other side, when started as such, or
// registers and runs its cases.
int runBenchmarks(int argc, char** argv, void (*registerCases)());

} // namespace Benchmarks
