#pragma once

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
    LinkPeers(const TransportKind& kind, const std::filesystem::path& folder, std::size_t batch);

    std::vector<int> processes() const;

  private:
    std::optional<Peer> daemon_;
    std::optional<Peer> peer_;
};

// Serves, when this process was started as the other side; then its exit status.
std::optional<int> servedBy(int argc, char** argv);

} // namespace Benchmarks
