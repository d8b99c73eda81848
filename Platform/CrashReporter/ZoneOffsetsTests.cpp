#include "Platform/CrashReporter/ZoneOffsets.h"

#include "Tests/Support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

namespace {

std::string text(const NS::LocalTime& time) {
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%d-%02d-%02d %02d:%02d:%02d", time.year,
                        time.month, time.day, time.hour, time.minute, time.second);
    return text.data();
}

TEST(CivilTime, CountsFrom1970) {
    EXPECT_EQ(text(NS::civilTime(0, 0)), "1970-01-01 00:00:00");
    EXPECT_EQ(text(NS::civilTime(1795269791, 0)), "2026-11-21 14:03:11");
}

TEST(CivilTime, KnowsLeapYears) {
    EXPECT_EQ(text(NS::civilTime(951782399, 0)), "2000-02-28 23:59:59");
    EXPECT_EQ(text(NS::civilTime(951782400, 0)), "2000-02-29 00:00:00");
    EXPECT_EQ(text(NS::civilTime(1740787199, 0)), "2025-02-28 23:59:59");
    EXPECT_EQ(text(NS::civilTime(1740787200, 0)), "2025-03-01 00:00:00");
    EXPECT_EQ(text(NS::civilTime(4107542399, 0)), "2100-02-28 23:59:59");
    EXPECT_EQ(text(NS::civilTime(4107542400, 0)), "2100-03-01 00:00:00");
}

TEST(CivilTime, EndsItsYears) {
    EXPECT_EQ(text(NS::civilTime(1798761599, 0)), "2026-12-31 23:59:59");
    EXPECT_EQ(text(NS::civilTime(1798761600, 0)), "2027-01-01 00:00:00");
}

TEST(CivilTime, AddsTheOffset) {
    EXPECT_EQ(text(NS::civilTime(1795269791, 3600)), "2026-11-21 15:03:11");
    EXPECT_EQ(text(NS::civilTime(1795269791, -5 * 3600 - 1800)), "2026-11-21 08:33:11");
}

TEST(CivilTime, DoesNotGoBeyondWhatAClockShows) {
    EXPECT_EQ(text(NS::civilTime(-5, 0)), "1970-01-01 00:00:00");
    EXPECT_EQ(NS::civilTime(std::int64_t{1} << 40, 0).year, 9999);
}

TEST(ZoneOffsets, AreTheUsersClocks) {
    const Tests::ScopedVariable zone("TZ", "XST-5:30");
    const auto offsets = NS::ZoneOffsets::from(1795269791);
    EXPECT_EQ(offsets.at(1795269791), 5 * 3600 + 1800);
    EXPECT_EQ(offsets.at(1795269791 + 400 * 86400), 5 * 3600 + 1800);
}

TEST(ZoneOffsets, FollowTheNextChangeOfTheClock) {
    // Back by an hour on 2026-11-01 at 06:00:00 UTC.
    const Tests::ScopedVariable zone("TZ", "EST5EDT,M3.2.0,M11.1.0");
    const auto offsets = NS::ZoneOffsets::from(1790000000);
    EXPECT_EQ(offsets.at(1793512799), -4 * 3600);
    EXPECT_EQ(offsets.at(1793512800), -5 * 3600);
}

TEST(ZoneOffsets, AgreeWithTheCLibrary) {
    for (const char* const name :
         {"UTC", "EST5EDT,M3.2.0,M11.1.0", "NZST-12NZDT,M9.5.0,M4.1.0/3"}) {
        const Tests::ScopedVariable zone("TZ", name);
        const std::int64_t start = 1795269791;
        const auto offsets = NS::ZoneOffsets::from(start);
        for (std::int64_t moment = start; moment < start + 400 * 86400; moment += 7919) {
            ASSERT_EQ(text(NS::civilTime(moment, offsets.at(moment))), text(NS::localTime(moment)))
                << name;
        }
    }
}

} // namespace
