#pragma once

#include "FileManagers/Qt/DriveLoop.h"

#include <memory>

namespace FileManagers {

// A drive that the event loop serves.
struct SharedDrive {
    Drive drive;
    DriveLoop loop{drive};
};

// That of all plug-ins in the process. It goes with the last of those that hold it.
std::shared_ptr<SharedDrive> sharedDrive();

} // namespace FileManagers
