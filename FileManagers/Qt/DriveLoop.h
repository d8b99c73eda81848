#pragma once

#include "FileManagers/Shared/Drive.h"

#include <QSocketNotifier>
#include <memory>

namespace FileManagers {

// Has the Qt event loop of its thread serve a drive, for as long as this object lives.
class DriveLoop {
  public:
    // The drive outlives it.
    explicit DriveLoop(Drive& drive);

  private:
    std::unique_ptr<QSocketNotifier> notifier_; // null without a bus
};

} // namespace FileManagers
