#include "FileManagers/Shared/Breaker.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

class Breaker : public testing::Test {
  protected:
    using Clock = FileManagers::Breaker::Clock;

    void timeOut(int times) {
        for (int i = 0; i < times; ++i) {
            breaker.noteTimeout(now);
        }
    }
    bool isOpenAfter(Clock::duration pause) const { return breaker.isOpen(true, now + pause); }

    const Clock::time_point now{1h};
    FileManagers::Breaker breaker{2s};
};

TEST_F(Breaker, IsClosedAtFirst) {
    EXPECT_FALSE(breaker.isOpen(true, now));
    EXPECT_FALSE(breaker.isOpen(false, now));
}

TEST_F(Breaker, IsOpenAfterATimeoutForAsLongAsNothingIsTakenIn) {
    timeOut(1);
    EXPECT_TRUE(breaker.isOpen(false, now));
    EXPECT_TRUE(breaker.isOpen(false, now + 24h));
}

TEST_F(Breaker, ClosesAtOnceAfterTheFirstTimeout) {
    timeOut(1);
    EXPECT_FALSE(isOpenAfter(0s));
}

TEST_F(Breaker, StaysOpenForLongerAfterEachTimeoutThatFollows) {
    timeOut(2);
    EXPECT_TRUE(isOpenAfter(2s - 1ns));
    EXPECT_FALSE(isOpenAfter(2s));
    timeOut(1);
    EXPECT_TRUE(isOpenAfter(4s - 1ns));
    EXPECT_FALSE(isOpenAfter(4s));
}

TEST_F(Breaker, TriesAgainAboutOnceAMinuteInTheEnd) {
    timeOut(1'000);
    EXPECT_TRUE(isOpenAfter(64s - 1ns));
    EXPECT_FALSE(isOpenAfter(64s));
}

TEST_F(Breaker, ForgetsTimeoutsWithAnAnswer) {
    timeOut(5);
    breaker.noteAnswer();
    EXPECT_FALSE(isOpenAfter(0s));
    timeOut(1);
    EXPECT_FALSE(isOpenAfter(0s));
}

TEST_F(Breaker, ForgetsThemWithTheExtension) {
    timeOut(5);
    breaker.reset();
    EXPECT_FALSE(breaker.isOpen(false, now));
}

} // namespace
