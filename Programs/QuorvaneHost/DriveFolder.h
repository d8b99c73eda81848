#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

// The real folder that the reference host serves as the drive.
class DriveFolder {
  public:
    // Throws std::filesystem::filesystem_error when the path is not a folder that can be read.
    explicit DriveFolder(const std::filesystem::path& folder);

    // The absolute path, symbolic links resolved, without a slash at its end.
    const std::string& path() const noexcept { return path_; }

    // Bytes in all regular files below the folder, the Trash included. Symbolic links are not
    // followed; what cannot be read counts nothing.
    std::int64_t bytesUsed() const;
    // Entries of the top-level folder "Trash"; 0 when there is none.
    std::int64_t trashCount() const;

  private:
    std::string path_;
};
