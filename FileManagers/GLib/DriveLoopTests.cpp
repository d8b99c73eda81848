#include "FileManagers/GLib/DriveLoop.h"

#include "FileManagers/Shared/Testing/DriveFixture.h"

#include <glib.h>

namespace {

// A drive in GLib's own loop.
class DriveLoop : public Tests::DriveTest {
  protected:
    void SetUp() override {
        drive.emplace(times);
        drive->setOnChange([this] { ++changes; });
        loop.emplace(*drive);
    }
    // Runs the loop, as a file manager does, until a condition holds.
    static bool runUntil(const std::function<bool()>& condition) {
        return Tests::waitUntil([&] {
            while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
            }
            return condition();
        });
    }

    std::optional<FileManagers::DriveLoop> loop;
};

TEST_F(DriveLoop, TellsChanges) {
    EXPECT_FALSE(drive->isOnDrive("/mnt/Drive"));
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->appear();
    EXPECT_TRUE(runUntil([&] { return drive->isOnDrive("/mnt/Drive"); }));
    const int before = changes;
    extension->changeGeneration();
    EXPECT_TRUE(runUntil([&] { return changes > before; }));
}

TEST_F(DriveLoop, RestsWhenThereIsNothingToDo) {
    EXPECT_FALSE(drive->isOnDrive("/mnt/Drive"));
    EXPECT_TRUE(runUntil([] { return g_main_context_pending(nullptr) == FALSE; }));
}

TEST_F(DriveLoop, EndsWithItsObject) {
    EXPECT_FALSE(drive->isOnDrive("/mnt/Drive"));
    loop.reset();
    changes = 0;
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->appear();
    EXPECT_TRUE(pump([&] { return drive->isOnDrive("/mnt/Drive"); }));
    const int before = changes;
    extension->changeGeneration();
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    EXPECT_EQ(changes, before);
}

class DriveLoopWithoutABus : public Tests::FolderTest {};

TEST_F(DriveLoopWithoutABus, HasNothingToServe) {
    FileManagers::Drive drive;
    const FileManagers::DriveLoop loop(drive);
    EXPECT_EQ(g_main_context_pending(nullptr), FALSE);
}

} // namespace
