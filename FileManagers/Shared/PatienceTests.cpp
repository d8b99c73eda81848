#include "FileManagers/Shared/Patience.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

class Patience : public testing::Test {
  protected:
    void wait(std::chrono::milliseconds time) {
        patience.noteWait(now, now + time);
        now += time;
    }

    FileManagers::Patience::Clock::time_point now{1h};
    FileManagers::Patience patience{200ms};
};

TEST_F(Patience, IsWholeAtFirst) {
    EXPECT_EQ(patience.left(now), 200ms);
}

TEST_F(Patience, IsSharedByTheQuestionsOfOneClick) {
    wait(70ms);
    now += 99ms;
    EXPECT_EQ(patience.left(now), 130ms);
    wait(70ms);
    EXPECT_EQ(patience.left(now), 60ms);
}

TEST_F(Patience, IsWholeAtTheNextClick) {
    wait(200ms);
    now += 100ms;
    EXPECT_EQ(patience.left(now), 200ms);
    wait(30ms);
    EXPECT_EQ(patience.left(now), 170ms);
}

TEST_F(Patience, LeavesALittleToEachQuestion) {
    wait(199ms);
    EXPECT_EQ(patience.left(now), 20ms);
    wait(20ms);
    EXPECT_EQ(patience.left(now), 20ms);
}

TEST_F(Patience, LeavesNoMoreThanThereWas) {
    patience = FileManagers::Patience(5ms);
    wait(5ms);
    EXPECT_EQ(patience.left(now), 5ms);
}

} // namespace
