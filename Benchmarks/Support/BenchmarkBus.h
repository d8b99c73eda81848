#pragma once

#include "Benchmarks/Support/SpawnedProgram.h"
#include "Benchmarks/Support/TemporaryFolder.h"

#include <optional>

namespace Benchmarks {

// A session bus of the benchmark's own, with the limits that desktops give it. Programs that are
// started while it is there find it.
class BenchmarkBus {
  public:
    // Returns when programs can connect. Throws when the bus does not come up.
    BenchmarkBus();

  private:
    TemporaryFolder folder_;
    std::optional<SpawnedProgram> daemon_;
};

} // namespace Benchmarks
