#pragma once

#include <filesystem>

namespace Benchmarks {

// A new folder of this process's own. Goes with this object, and with it what is in it. Throws when
// there can be none.
class TemporaryFolder {
  public:
    // Where programs keep what is temporary: on a disk, mostly.
    TemporaryFolder() : TemporaryFolder(std::filesystem::temp_directory_path()) {}
    explicit TemporaryFolder(const std::filesystem::path& parent);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Absolute and without symbolic links.
    const std::filesystem::path& path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

// The parent of folders in memory, where a session's run-time folder is too: a disk would add its
// own time.
inline constexpr const char* kInMemory = "/dev/shm";

} // namespace Benchmarks
