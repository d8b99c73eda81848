#include "FileManagers/Qt/DriveLoop.h"

#include "FileManagers/Shared/Testing/DriveFixture.h"

#include <QCoreApplication>
#include <functional>

namespace {

// A drive in Qt's own loop.
class DriveLoopOfQt : public Tests::DriveTest {
  protected:
    void SetUp() override {
        drive.emplace(times);
        drive->setOnChange([this] { ++changes; });
        loop.emplace(*drive);
    }
    // Runs the loop, as a file manager does, until a condition holds.
    static bool runUntil(const std::function<bool()>& condition) {
        return Tests::waitUntil([&] {
            QCoreApplication::processEvents();
            return condition();
        });
    }

    int count = 1;
    char name[6] = "tests";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{count, arguments};
    std::optional<FileManagers::DriveLoop> loop;
};

TEST_F(DriveLoopOfQt, TellsChanges) {
    EXPECT_FALSE(drive->isOnDrive("/mnt/Drive"));
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->appear();
    EXPECT_TRUE(runUntil([&] { return drive->isOnDrive("/mnt/Drive"); }));
    const int before = changes;
    extension->changeGeneration();
    EXPECT_TRUE(runUntil([&] { return changes > before; }));
}

TEST_F(DriveLoopOfQt, EndsWithItsObject) {
    EXPECT_FALSE(drive->isOnDrive("/mnt/Drive"));
    loop.reset();
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->appear();
    EXPECT_TRUE(pump([&] { return drive->isOnDrive("/mnt/Drive"); }));
    const int before = changes;
    extension->changeGeneration();
    ASSERT_TRUE(Tests::waitUntil([&] {
        pollfd ready{drive->descriptor(), POLLIN, 0};
        return ::poll(&ready, 1, 0) > 0;
    }));
    QCoreApplication::processEvents();
    EXPECT_EQ(changes, before);
}

class DriveLoopOfQtWithoutABus : public Tests::FolderTest {};

TEST_F(DriveLoopOfQtWithoutABus, HasNothingToServe) {
    FileManagers::Drive drive;
    EXPECT_EQ(drive.descriptor(), -1);
    const FileManagers::DriveLoop loop(drive);
    EXPECT_FALSE(drive.isOnDrive("/"));
}

} // namespace
