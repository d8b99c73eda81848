#include "Platform/Foundation/DateFormatter.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Testing/ManualClock.h"
#include "Tests/Support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace {

// 2026-11-16 06:56:27 UTC.
constexpr double kMoment = 816504987;

class DateFormatter : public testing::Test {
  protected:
    static std::string rendered(NS::DateFormatter& formatter, double moment) {
        return formatter.stringFromDate(*NS::make<NS::Date>(moment))->utf8();
    }
    static std::string rendered(std::string_view pattern, double moment) {
        NS::DateFormatter formatter(pattern);
        return rendered(formatter, moment);
    }
    static std::string reasonFor(std::string_view pattern) {
        try {
            const NS::DateFormatter formatter(pattern);
        } catch (const NS::Exception& exception) {
            EXPECT_EQ(exception.name()->utf8(), NS::kInvalidArgumentException);
            return exception.reason()->utf8();
        }
        return "none";
    }

    Tests::ScopedVariable zone{"TZ", "UTC"};
};

TEST_F(DateFormatter, RendersThePatternsInUse) {
    EXPECT_EQ(rendered("yyyy-MM-dd HH:mm:ss", kMoment + 0.412), "2026-11-16 06:56:27");
    EXPECT_EQ(rendered("yyyy-MM-dd HH:mm:ss.SS", kMoment + 0.412), "2026-11-16 06:56:27.41");
    EXPECT_EQ(rendered("yyyy-MM-dd HH:mm:ss.SSS", kMoment + 0.412), "2026-11-16 06:56:27.412");
    EXPECT_EQ(rendered("S", kMoment + 0.412), "4");
}

TEST_F(DateFormatter, PadsWithZeros) {
    // 2031-02-03 04:05:06.007 UTC
    EXPECT_EQ(rendered("yyyy-MM-dd HH:mm:ss.SSS", 949550706.007), "2031-02-03 04:05:06.007");
}

TEST_F(DateFormatter, CutsFractionsOff) {
    EXPECT_EQ(rendered("ss.SS", kMoment + 0.999), "27.99");
    EXPECT_EQ(rendered("ss.SS", kMoment + 0.41999), "27.41");
    EXPECT_EQ(rendered("ss.SSS", kMoment + 0.0009), "27.000");
}

// As a double, most hundredths are a little less than they are meant to be.
TEST_F(DateFormatter, KeepsEachHundredth) {
    NS::DateFormatter formatter("SS");
    for (int hundredth = 0; hundredth < 100; ++hundredth) {
        const std::string expected = {static_cast<char>('0' + hundredth / 10),
                                      static_cast<char>('0' + hundredth % 10)};
        EXPECT_EQ(rendered(formatter, kMoment + hundredth / 100.0), expected);
    }
}

TEST_F(DateFormatter, RendersMomentsBefore1970) {
    EXPECT_EQ(rendered("yyyy-MM-dd HH:mm:ss.SS", -978307200.0 - 0.25), "1969-12-31 23:59:59.75");
}

TEST_F(DateFormatter, StopsAtTheLimitsOfTheCalendar) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(rendered("yyyy", -infinity), "0001");
    EXPECT_EQ(rendered("yyyy", infinity), "9999");
    EXPECT_EQ(rendered("yyyy", 1e300), "9999");
    EXPECT_EQ(rendered("yyyy", std::numeric_limits<double>::quiet_NaN()), "0001");
}

TEST_F(DateFormatter, StopsAtTheLimitsOfTheCalendarInEveryZone) {
    zone.put("XST-14");
    EXPECT_EQ(rendered("yyyy", 1e300), "9999");
    zone.put("XST+12");
    EXPECT_EQ(rendered("yyyy", -1e300), "0001");
}

TEST_F(DateFormatter, KeepsLiteralText) {
    EXPECT_EQ(rendered("[dd/MM] 42!", kMoment), "[16/11] 42!");
    EXPECT_EQ(rendered("HH'h'mm'min' 'of yyyy'", kMoment), "06h56min of yyyy");
    EXPECT_EQ(rendered("HH''mm '' 'o''clock' 'a'''", kMoment), "06'56 ' o'clock a'");
    EXPECT_EQ(rendered("\xE2\x80\x94"
                       "dd",
                       kMoment),
              "\xE2\x80\x94"
              "16");
    EXPECT_EQ(rendered("", kMoment), "");
}

TEST_F(DateFormatter, RaisesForAPatternThatItDoesNotKnow) {
    EXPECT_EQ(reasonFor("yyyy Z"), "date pattern \"yyyy Z\": there is no field \"Z\"");
    EXPECT_EQ(reasonFor("MMM"), "date pattern \"MMM\": there is no field \"MMM\"");
    EXPECT_EQ(reasonFor("hh"), "date pattern \"hh\": there is no field \"hh\"");
    EXPECT_EQ(reasonFor("SSSS"), "date pattern \"SSSS\": there is no field \"SSSS\"");
    EXPECT_EQ(reasonFor("HH'h"), "date pattern \"HH'h\": an apostrophe has no counterpart");
    EXPECT_NE(reasonFor(std::string(65, '-')).find("too long"), std::string::npos);
    EXPECT_EQ(reasonFor(std::string(64, '-')), "none");
}

TEST_F(DateFormatter, RendersLocalTime) {
    zone.put("EST5EDT");
    EXPECT_EQ(rendered("dd HH:mm", kMoment), "16 01:56");
    zone.put("<+0530>-5:30");
    EXPECT_EQ(rendered("dd HH:mm", kMoment), "16 12:26");
}

TEST_F(DateFormatter, FollowsTheZoneWithinASecond) {
    NS::DateFormatter formatter("HH:mm:ss.SS");
    EXPECT_EQ(rendered(formatter, kMoment + 0.1), "06:56:27.10");
    zone.put("XST-1");
    EXPECT_EQ(rendered(formatter, kMoment + 0.2), "07:56:27.20");
    zone.put("XST-2");
    EXPECT_EQ(rendered(formatter, kMoment + 0.3), "08:56:27.30");
    zone.put("");
    EXPECT_EQ(rendered(formatter, kMoment + 0.4), "06:56:27.40");
}

TEST_F(DateFormatter, TellsNoZoneFromTheMachinesZone) {
    zone.put("XST-3");
    NS::DateFormatter formatter("HH");
    EXPECT_EQ(rendered(formatter, kMoment), "09");
    zone.put(std::nullopt);
    EXPECT_EQ(rendered(formatter, kMoment), rendered("HH", kMoment));
}

TEST_F(DateFormatter, FollowsAZoneWhoseNameIsTooLongToKeep) {
    NS::DateFormatter formatter("HH");
    const std::string letters(80, 'X');
    zone.put("<" + letters + ">-1");
    EXPECT_EQ(rendered(formatter, kMoment), rendered("HH", kMoment));
    zone.put("XST-2");
    EXPECT_EQ(rendered(formatter, kMoment), "08");
}

TEST_F(DateFormatter, FollowsSummerTimeAndAClockThatIsSetBack) {
    zone.put("CET-1CEST,M3.5.0,M10.5.0/3");
    NS::DateFormatter formatter("HH:mm:ss.SS");
    // 2026-10-25 00:59:59.5 UTC is the last second of summer time.
    EXPECT_EQ(rendered(formatter, 814582799.5), "02:59:59.50");
    EXPECT_EQ(rendered(formatter, 814582800.5), "02:00:00.50");
    EXPECT_EQ(rendered(formatter, 814582799.75), "02:59:59.75");
}

TEST_F(DateFormatter, RendersThisMomentByOneReadingOfTheClock) {
    NS::ManualClock clock(kMoment + 0.25);
    const NS::ScopedClock scope(clock);
    clock.setTick(1.5);
    NS::DateFormatter formatter("yyyy-MM-dd HH:mm:ss.SS");
    EXPECT_EQ(std::string_view(formatter.now()), "2026-11-16 06:56:27.25");
    EXPECT_EQ(std::string_view(formatter.now()), "2026-11-16 06:56:28.75");
}

TEST_F(DateFormatter, LooksForTheZoneOfThisMomentWithEachSecond) {
    NS::ManualClock clock(kMoment);
    const NS::ScopedClock scope(clock);
    NS::DateFormatter formatter("HH:mm:ss");
    EXPECT_EQ(std::string_view(formatter.now()), "06:56:27");
    zone.put("XST-1");
    clock.set(kMoment + 1);
    EXPECT_EQ(std::string_view(formatter.now()), "07:56:28");
    zone.put("XST-2");
    EXPECT_EQ(rendered(formatter, kMoment + 1), "08:56:28");
}

TEST_F(DateFormatter, ServesSeveralThreads) {
    NS::DateFormatter formatter("ss.SS");
    std::vector<std::thread> threads;
    std::array<int, 4> wrong{};
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            const std::string expected = "3" + std::to_string(thread) + ".50";
            for (int i = 0; i < 2000; ++i) {
                const bool right = rendered(formatter, kMoment + 3.5 + thread) == expected;
                wrong[static_cast<std::size_t>(thread)] += right ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, (std::array<int, 4>{}));
}

} // namespace
