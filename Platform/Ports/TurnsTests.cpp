#include "Platform/Ports/linux/Turns.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// How many turns of so many looked for further messages, when each found so many in all.
int looksOf(NS::Turns& turns, int count, int waiting) {
    int looks = 0;
    for (int i = 0; i < count; ++i) {
        const int most = turns.beginTurn();
        looks += most > 1 ? 1 : 0;
        turns.endTurn(most, std::min(most, waiting));
    }
    return looks;
}

TEST(Turns, LookForFurtherMessagesAtFirst) {
    NS::Turns turns;
    EXPECT_EQ(turns.beginTurn(), NS::PortLimits::kMessagesPerTurn);
}

TEST(Turns, LookSeldomWhereThereNeverIsAFurtherMessage) {
    NS::Turns turns;
    (void)looksOf(turns, 100, 1);
    EXPECT_EQ(looksOf(turns, 160, 1), 10);
}

TEST(Turns, AlwaysLookWhereThereAre) {
    NS::Turns turns;
    EXPECT_EQ(looksOf(turns, 100, 2), 100);
}

TEST(Turns, NoticeManyMessagesWithinSixteenTurns) {
    NS::Turns turns;
    (void)looksOf(turns, 100, 1);
    EXPECT_GE(looksOf(turns, 20, 100), 5);
}

TEST(Turns, TakeOneMessageWhenTheyDoNotLook) {
    NS::Turns turns;
    turns.endTurn(turns.beginTurn(), 1);
    EXPECT_EQ(turns.beginTurn(), 1);
}

TEST(Turns, LookAgainAfterTurnsWithinOneAnother) {
    NS::Turns turns;
    turns.endTurn(turns.beginTurn(), 1);
    const int outer = turns.beginTurn();
    const int inner = turns.beginTurn();
    turns.endTurn(inner, 1);
    turns.endTurn(outer, 1);
    EXPECT_EQ(turns.beginTurn(), NS::PortLimits::kMessagesPerTurn);
}

} // namespace
