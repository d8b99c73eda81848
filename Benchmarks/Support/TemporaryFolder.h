#pragma once

#include <filesystem>

namespace Benchmarks {

// A new folder of this process's own, where programs keep what is temporary. Goes with this object,
// and with it what is in it. Throws when there can be none.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Absolute and without symbolic links.
    const std::filesystem::path& path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace Benchmarks
