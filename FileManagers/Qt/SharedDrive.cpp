#include "FileManagers/Qt/SharedDrive.h"

namespace FileManagers {

std::shared_ptr<SharedDrive> sharedDrive() {
    static std::weak_ptr<SharedDrive> known;
    auto shared = known.lock();
    if (!shared) {
        shared = std::make_shared<SharedDrive>();
        known = shared;
    }
    return shared;
}

} // namespace FileManagers
