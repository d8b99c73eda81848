#include "FileManagers/GLib/DriveLoop.h"

#include "FileManagers/Shared/Testing/DriveLoopCases.h"

#include <glib.h>

namespace {

struct GLibLoop {
    using Serving = FileManagers::DriveLoop;

    static void turn() {
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
    }
};

} // namespace

namespace Tests {

INSTANTIATE_TYPED_TEST_SUITE_P(GLib, DriveLoopTest, GLibLoop);

using DriveLoopOfGLib = DriveLoopTest<GLibLoop>;

TEST_F(DriveLoopOfGLib, RestsWhenThereIsNothingToDo) {
    EXPECT_TRUE(runUntil([] { return g_main_context_pending(nullptr) == FALSE; }));
}

} // namespace Tests
