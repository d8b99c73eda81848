#pragma once

#include "FileManagers/Qt/DriveLoop.h"
#include "FileManagers/Shared/Drive.h"

#include <memory>

namespace FileManagers {

// The drive of all plug-ins in the process, which the event loop serves. It goes with the last one
// that holds it, before the application does.
struct SharedDrive {
    Drive drive;
    DriveLoop loop{drive};
};

std::shared_ptr<SharedDrive> sharedDrive();

} // namespace FileManagers
