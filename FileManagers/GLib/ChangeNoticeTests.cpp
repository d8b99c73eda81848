#include "FileManagers/GLib/ChangeNotice.h"

#include "Tests/Support/Process.h"

#include <optional>

#include <gtest/gtest.h>

namespace {

// A file manager that takes a while to build its menus, by a clock that goes on only then.
class ChangeNotice : public testing::Test {
  protected:
    void turn() { (void)g_main_context_iteration(nullptr, FALSE); }

    std::int64_t now = 1'000'000;
    std::int64_t takes = 5'000;
    int told = 0;
    std::optional<FileManagers::ChangeNotice> notice{std::in_place,
                                                     [this] {
                                                         ++told;
                                                         now += takes;
                                                     },
                                                     [this] {
                                                         return now;
                                                     }};
};

TEST_F(ChangeNotice, IsGivenAtOnce) {
    notice->note();
    EXPECT_EQ(told, 1);
}

TEST_F(ChangeNotice, IsGivenAtOnceAgainAfterARest) {
    notice->note();
    now += 4 * takes;
    notice->note();
    EXPECT_EQ(told, 2);
}

TEST_F(ChangeNotice, IsGivenOnceForWhatChangesMeanwhile) {
    notice->note();
    for (int i = 0; i < 3; ++i) {
        notice->note();
    }
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(Tests::waitUntil([&] {
        turn();
        return told == 2;
    }));
    now += 4 * takes;
    turn();
    EXPECT_EQ(told, 2);
}

TEST_F(ChangeNotice, IsGivenAgainAfterTheOneThatWaited) {
    notice->note();
    notice->note();
    EXPECT_TRUE(Tests::waitUntil([&] {
        turn();
        return told == 2;
    }));
    now += 4 * takes;
    notice->note();
    EXPECT_EQ(told, 3);
}

TEST_F(ChangeNotice, IsNotGivenWhenItHasGone) {
    notice->note();
    notice->note();
    notice.reset();
    bool isLater = false;
    (void)g_timeout_add(
        100, [](gpointer flag) { return *static_cast<bool*>(flag) = true, G_SOURCE_REMOVE; },
        &isLater);
    EXPECT_TRUE(Tests::waitUntil([&] {
        turn();
        return isLater;
    }));
    EXPECT_EQ(told, 1);
}

} // namespace
