#pragma once

#include "Benchmarks/Support/TemporaryFolder.h"

#include <filesystem>

namespace Benchmarks {

// A folder in memory that goes with this object. While it lives, the programs of this tree keep
// everything in it: it is the process's home, run-time and data folder, and the session bus's
// place.
class ScratchFolder {
  public:
    ScratchFolder();

    const std::filesystem::path& path() const noexcept { return folder_.path(); }

  private:
    TemporaryFolder folder_{kInMemory};
};

} // namespace Benchmarks
