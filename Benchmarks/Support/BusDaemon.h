#pragma once

#include "Benchmarks/Support/Peer.h"

#include <filesystem>

namespace Benchmarks {

// A session bus at the socket "bus" of a folder; goes with this object.
class BusDaemon {
  public:
    explicit BusDaemon(const std::filesystem::path& folder);

    int process() const noexcept { return daemon_.process(); }

  private:
    Peer daemon_;
};

} // namespace Benchmarks
