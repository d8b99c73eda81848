#include "Platform/Foundation/Date.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// Moves only when it is told to.
class HandSetClock final : public NS::Clock {
  public:
    double absoluteTime() override { return now; }
    void sleep(double seconds) override { now += seconds; }

    double now = 1000;
};

TEST(Date, ReadsTheClockWhereItSaysSo) {
    HandSetClock clock;
    const NS::ScopedClock scope(clock);
    EXPECT_EQ(NS::Date::date()->timeIntervalSinceReferenceDate(), 1000.0);
    EXPECT_EQ(NS::Date::dateWithTimeIntervalSinceNow(-2.5)->timeIntervalSinceReferenceDate(),
              997.5);
    clock.now = 500; // also back
    EXPECT_EQ(NS::Date::date()->timeIntervalSinceReferenceDate(), 500.0);
}

TEST(Date, CountsFromTwoBeginnings) {
    const auto date = NS::Date::dateWithTimeIntervalSince1970(0);
    EXPECT_EQ(date->timeIntervalSinceReferenceDate(), -978307200.0);
    EXPECT_EQ(date->timeIntervalSince1970(), 0.0);
    EXPECT_EQ(NS::make<NS::Date>(0.5)->timeIntervalSince1970(), 978307200.5);
}

TEST(Date, HasAFutureThatIsDistant) {
    EXPECT_EQ(NS::Date::distantFuture()->description()->utf8(), "4001-01-01 00:00:00 +0000");
}

TEST(Date, ComparesMoments) {
    const auto early = NS::make<NS::Date>(1.0);
    const auto late = NS::make<NS::Date>(1.5);
    EXPECT_LT(early->compare(*late), 0);
    EXPECT_GT(late->compare(*early), 0);
    EXPECT_EQ(early->compare(*NS::make<NS::Date>(1.0)), 0);
}

TEST(Date, EqualsTheSameMoment) {
    const auto date = NS::make<NS::Date>(0.0);
    const auto same = NS::make<NS::Date>(-0.0);
    EXPECT_TRUE(date->isEqual(same.get()));
    EXPECT_EQ(date->hash(), same->hash());
    EXPECT_FALSE(date->isEqual(NS::make<NS::Date>(0.001).get()));
    EXPECT_FALSE(date->isEqual(NS::Number::numberWithDouble(0).get()));
    EXPECT_FALSE(date->isEqual(nullptr));
}

TEST(Date, EqualsItselfAlsoWhereItIsNoMoment) {
    const auto date = NS::make<NS::Date>(std::nan(""));
    EXPECT_TRUE(date->isEqual(date.get()));
}

constexpr double kBeforeYear10000 = 252423993599.99997; // the last double
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

struct Described {
    double seconds;
    const char* text;
};

constexpr Described kDescriptions[] = {
    {0,                "2001-01-01 00:00:00 +0000"                           },
    {0.999999999,      "2001-01-01 00:00:00 +0000"                           },
    {-0.000001,        "2000-12-31 23:59:59 +0000"                           },
    {816591387.25,     "2026-11-17 06:56:27 +0000"                           },
    {-978307200,       "1970-01-01 00:00:00 +0000"                           },
    {94694400,         "2004-01-02 00:00:00 +0000"                           },
    {99791999,         "2004-02-29 23:59:59 +0000"                           },
    {-63113904000,     "0001-01-01 00:00:00 +0000"                           },
    {252423993599.5,   "9999-12-31 23:59:59 +0000"                           },
    {kBeforeYear10000, "9999-12-31 23:59:59 +0000"                           },
    {252423993600,     "252423993600 seconds since 2001-01-01 00:00:00 +0000"},
    {-63113904001,     "-63113904001 seconds since 2001-01-01 00:00:00 +0000"},
    {1e300,            "1e+300 seconds since 2001-01-01 00:00:00 +0000"      },
    {HUGE_VAL,         "inf seconds since 2001-01-01 00:00:00 +0000"         },
    {kNotANumber,      "nan seconds since 2001-01-01 00:00:00 +0000"         },
};

TEST(Date, DescribesWholeSecondsInUtc) {
    for (const Described& each : kDescriptions) {
        EXPECT_EQ(NS::make<NS::Date>(each.seconds)->description()->utf8(), each.text);
    }
}

TEST(Clock, IsTheSystemsOwnUnlessReplaced) {
    HandSetClock first;
    HandSetClock second;
    {
        const NS::ScopedClock outer(first);
        {
            const NS::ScopedClock inner(second);
            EXPECT_EQ(&NS::Clock::current(), &second);
        }
        EXPECT_EQ(&NS::Clock::current(), &first);
    }
    EXPECT_NE(&NS::Clock::current(), &first);
    EXPECT_GT(NS::absoluteTimeGetCurrent(), 700000000.0); // after 2023
}

TEST(Clock, SleepsOnTheClockInUse) {
    HandSetClock clock;
    const NS::ScopedClock scope(clock);
    NS::sleepForTimeInterval(3600);
    EXPECT_EQ(NS::absoluteTimeGetCurrent(), 4600.0);
}

TEST(Clock, GoesOnByItself) {
    const double start = NS::absoluteTimeGetCurrent();
    NS::sleepForTimeInterval(0.002);
    EXPECT_GE(NS::absoluteTimeGetCurrent() - start, 0.0019);
}

TEST(Clock, DoesNotSleepForNothing) {
    for (const double seconds : {0.0, -1.0, -HUGE_VAL, std::nan("")}) {
        // Would hang, or fail under the sanitisers.
        EXPECT_NO_THROW(NS::sleepForTimeInterval(seconds));
    }
}

} // namespace
