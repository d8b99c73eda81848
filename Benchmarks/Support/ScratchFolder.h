#pragma once

#include <filesystem>

namespace Benchmarks {

// A folder in memory that goes with this object. While it lives, the programs of this tree keep
// everything in it: it is the process's home, run-time and data folder, and the session bus's
// place.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace Benchmarks
