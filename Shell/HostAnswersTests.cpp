#include "Shell/HostAnswers.h"

#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using Clock = Shell::HostAnswers::Clock;
constexpr auto kPatience = Shell::HostAnswers::kPatience;

// Time is what the test says.
class HostAnswers : public testing::Test {
  protected:
    void make() {
        const Shell::Host host{[this] { return isThere; },
                               [this] {
                                   return record;
                               }};
        answers.emplace(host, now);
    }
    void send() { record = NS::str("record"); }

    bool isThere = true;
    NS::RefPtr<NS::Object> record;
    Clock::time_point now{std::chrono::hours(1)};
    std::optional<Shell::HostAnswers> answers;
};

TEST_F(HostAnswers, AreMissedOnceTheyHaveTakenTooLong) {
    make();
    EXPECT_TRUE(answers->value());
    EXPECT_EQ(answers->nextLook(), now + kPatience);
    EXPECT_FALSE(answers->refresh(now + kPatience - Clock::duration(1)));
    EXPECT_TRUE(answers->value());
    EXPECT_TRUE(answers->refresh(now + kPatience));
    EXPECT_FALSE(answers->value());
    EXPECT_EQ(answers->nextLook(), std::nullopt);
    EXPECT_FALSE(answers->refresh(now + 2 * kPatience));
}

TEST_F(HostAnswers, AreThereWhenTheRecordIs) {
    send();
    make();
    EXPECT_EQ(answers->nextLook(), std::nullopt);
    EXPECT_FALSE(answers->refresh(now + 2 * kPatience));
    EXPECT_TRUE(answers->value());
}

TEST_F(HostAnswers, AreTheRecordsThatComeAfterTheQuestion) {
    send();
    make();
    answers->noteAsked(now);
    (void)answers->refresh(now + kPatience);
    EXPECT_FALSE(answers->value());
    send(); // an equal one, but another
    EXPECT_TRUE(answers->refresh(now + kPatience));
    EXPECT_TRUE(answers->value());
    EXPECT_EQ(answers->nextLook(), std::nullopt);
}

TEST_F(HostAnswers, AreMissedFromTheFirstQuestionOn) {
    make();
    answers->noteAsked(now + kPatience / 2);
    (void)answers->refresh(now + kPatience);
    EXPECT_FALSE(answers->value());
}

TEST_F(HostAnswers, AreMissedAtOnceWhileTheHostIsNotThere) {
    send();
    make();
    isThere = false;
    EXPECT_TRUE(answers->refresh(now));
    EXPECT_FALSE(answers->value());
    isThere = true;
    EXPECT_TRUE(answers->refresh(now));
    EXPECT_TRUE(answers->value());
}

TEST_F(HostAnswers, AreNotMissedWhereThereIsNothingToLookAt) {
    Shell::HostAnswers none({}, now);
    none.noteAsked(now);
    EXPECT_EQ(none.nextLook(), std::nullopt);
    EXPECT_FALSE(none.refresh(now + 2 * kPatience));
    EXPECT_TRUE(none.value());
}

} // namespace
