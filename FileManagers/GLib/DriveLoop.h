#pragma once

#include "FileManagers/Shared/Drive.h"

namespace FileManagers {

// Has the default main loop of GLib serve a drive, for as long as this object lives.
class DriveLoop {
  public:
    // The drive outlives it.
    explicit DriveLoop(Drive& drive);
    ~DriveLoop();
    DriveLoop(const DriveLoop&) = delete;
    DriveLoop& operator=(const DriveLoop&) = delete;

  private:
    unsigned source_ = 0; // none without a bus
};

} // namespace FileManagers
