#pragma once

#include "FileManagers/Shared/Testing/DriveFixture.h"

#include <functional>
#include <optional>
#include <poll.h>

namespace Tests {

// What every file manager's loop does for a drive. Foreign is that loop: its turn() carries out
// what is due, and its Serving has it serve a drive for as long as it lives.
template <class Foreign>
class DriveLoopTest : public DriveTest {
  protected:
    void SetUp() override {
        drive.emplace(times);
        drive->setOnChange([this] { ++changes; });
        loop.emplace(*drive);
        (void)drive->isOnDrive("/mnt/Drive"); // which waits for what there is to know
    }
    bool runUntil(const std::function<bool()>& condition) {
        return waitUntil([&] {
            foreign.turn();
            return condition();
        });
    }
    void appear() {
        extension.emplace(Titles{"file:///mnt/Drive"});
        extension->appear();
    }
    bool hasSomethingToServe() const {
        pollfd ready{drive->descriptor(), POLLIN, 0};
        return ::poll(&ready, 1, 0) > 0;
    }

    Foreign foreign;
    std::optional<typename Foreign::Serving> loop;
};
TYPED_TEST_SUITE_P(DriveLoopTest);

TYPED_TEST_P(DriveLoopTest, TellsChanges) {
    this->appear();
    EXPECT_TRUE(this->runUntil([&] { return this->drive->isOnDrive("/mnt/Drive"); }));
    const int before = this->changes;
    this->extension->changeGeneration();
    EXPECT_TRUE(this->runUntil([&] { return this->changes > before; }));
}

TYPED_TEST_P(DriveLoopTest, EndsWithItsObject) {
    this->loop.reset();
    this->appear();
    EXPECT_TRUE(this->pump([&] { return this->drive->isOnDrive("/mnt/Drive"); }));
    const int before = this->changes;
    this->extension->changeGeneration();
    ASSERT_TRUE(waitUntil([&] { return this->hasSomethingToServe(); }));
    this->foreign.turn();
    EXPECT_EQ(this->changes, before);
}

TYPED_TEST_P(DriveLoopTest, HasNothingToServeWithoutABus) {
    this->loop.reset();
    this->drive.reset();
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    this->drive.emplace(this->times);
    EXPECT_EQ(this->drive->descriptor(), -1);
    this->loop.emplace(*this->drive);
    this->foreign.turn();
    EXPECT_FALSE(this->drive->isOnDrive("/"));
}

REGISTER_TYPED_TEST_SUITE_P(DriveLoopTest, TellsChanges, EndsWithItsObject,
                            HasNothingToServeWithoutABus);

} // namespace Tests
