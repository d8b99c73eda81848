#include "Platform/Foundation/DateStamp.h"

#include "Platform/Foundation/Data.h"
#include "Tests/Support/ScopedVariable.h"

#include <gtest/gtest.h>

namespace {

using NS::DateStamp;

// 2026-11-16 06:56:27 UTC.
constexpr double kMoment = 816504987;

class Stamp : public testing::Test {
  protected:
    std::string_view text(double moment,
                          DateStamp::ZoneLook look = DateStamp::ZoneLook::kEachTime) {
        return stamp.text(moment, look);
    }

    Tests::ScopedVariable zone{"TZ", "UTC"};
    DateStamp stamp{"[HH:mm:ss.SS]: "};
};

TEST_F(Stamp, WritesEachMomentInTheSamePlace) {
    const std::string_view first = text(kMoment + 0.25);
    EXPECT_EQ(first, "[06:56:27.25]: ");
    const std::string_view second = text(kMoment + 1.5);
    EXPECT_EQ(second, "[06:56:28.50]: ");
    EXPECT_EQ(second.data(), first.data());
}

TEST_F(Stamp, WritesTheFractionOfASecondThatIsKept) {
    (void)text(kMoment + 0.25);
    EXPECT_EQ(text(kMoment + 0.75), "[06:56:27.75]: ");
    EXPECT_EQ(text(kMoment), "[06:56:27.00]: ");
}

TEST_F(Stamp, LooksForTheZoneWhenItIsToldTo) {
    (void)text(kMoment);
    zone.put("XST-1");
    EXPECT_EQ(text(kMoment, DateStamp::ZoneLook::kEachSecond), "[06:56:27.00]: ");
    EXPECT_EQ(text(kMoment, DateStamp::ZoneLook::kEachTime), "[07:56:27.00]: ");
    zone.put("XST-2");
    EXPECT_EQ(text(kMoment + 1, DateStamp::ZoneLook::kEachSecond), "[08:56:28.00]: ");
}

TEST_F(Stamp, AppendsToBytes) {
    NS::ByteBuffer bytes;
    stamp.append(bytes, kMoment + 0.25);
    stamp.append(bytes, kMoment + 1.5);
    stamp.append(bytes, kMoment + 1.75);
    EXPECT_EQ(NS::charactersOf(bytes), "[06:56:27.25]: [06:56:28.50]: [06:56:28.75]: ");
}

} // namespace
