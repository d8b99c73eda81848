#include "FileManagers/Qt/DriveLoop.h"

#include "FileManagers/Shared/Testing/DriveLoopCases.h"

#include <QCoreApplication>

namespace {

struct QtLoop {
    using Serving = FileManagers::DriveLoop;

    static void turn() { QCoreApplication::processEvents(); }

    int count = 1;
    char name[6] = "tests";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{count, arguments};
};

} // namespace

namespace Tests {

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, DriveLoopTest, QtLoop);

} // namespace Tests
