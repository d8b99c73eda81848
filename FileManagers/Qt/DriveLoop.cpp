#include "FileManagers/Qt/DriveLoop.h"

namespace FileManagers {

DriveLoop::DriveLoop(Drive& drive) {
    if (drive.descriptor() >= 0) {
        notifier_ = std::make_unique<QSocketNotifier>(drive.descriptor(), QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, [&drive] { drive.serve(); });
    }
}

} // namespace FileManagers
