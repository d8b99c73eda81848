#include "Platform/Foundation/ISO8601.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(ISO8601, WritesMomentsInUtc) {
    EXPECT_EQ(NS::iso8601FromSeconds(0), "2001-01-01T00:00:00Z");
    EXPECT_EQ(NS::iso8601FromSeconds(-1), "2000-12-31T23:59:59Z");
    EXPECT_EQ(NS::iso8601FromSeconds(86399), "2001-01-01T23:59:59Z");
    EXPECT_EQ(NS::iso8601FromSeconds(-978307200), "1970-01-01T00:00:00Z");
    EXPECT_EQ(NS::iso8601FromSeconds(-31449600), "2000-01-03T00:00:00Z");
}

TEST(ISO8601, WritesTheFractionOfASecond) {
    EXPECT_EQ(NS::iso8601FromSeconds(0.5), "2001-01-01T00:00:00.5Z");
    EXPECT_EQ(NS::iso8601FromSeconds(-0.25), "2000-12-31T23:59:59.75Z");
    EXPECT_EQ(NS::iso8601FromSeconds(0.96875), "2001-01-01T00:00:00.96875Z");
}

TEST(ISO8601, GivesBackTheVerySameNumber) {
    for (const double seconds : {0.0, 0.1, 1e-9, 816000000.123456, -816000000.987654, 1.0 / 3,
                                 std::nextafter(1.0, 0.0), std::nextafter(816000000.0, 0.0)}) {
        const auto text = NS::iso8601FromSeconds(seconds).value();
        EXPECT_EQ(NS::secondsFromIso8601(text), seconds) << text;
    }
}

TEST(ISO8601, RoundsWhatNoNumberOfPlacesTells) {
    EXPECT_EQ(NS::iso8601FromSeconds(-1e-300), "2001-01-01T00:00:00Z");
    EXPECT_EQ(NS::iso8601FromSeconds(1e-300), "2001-01-01T00:00:00.00000000000000000000Z");
}

TEST(ISO8601, HasNoTextBeyondFourDigitsOfAYear) {
    EXPECT_EQ(NS::iso8601FromSeconds(-63113904000), "0001-01-01T00:00:00Z");
    EXPECT_EQ(NS::iso8601FromSeconds(252423993599), "9999-12-31T23:59:59Z");
    EXPECT_FALSE(NS::iso8601FromSeconds(-63113904001));
    EXPECT_FALSE(NS::iso8601FromSeconds(252423993600));
    EXPECT_FALSE(NS::iso8601FromSeconds(std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(NS::iso8601FromSeconds(std::numeric_limits<double>::quiet_NaN()));
}

TEST(ISO8601, ReadsLeapDays) {
    EXPECT_EQ(NS::secondsFromIso8601("2000-02-29T00:00:00Z"), -26524800);
    EXPECT_FALSE(NS::secondsFromIso8601("2001-02-29T00:00:00Z"));
}

TEST(ISO8601, RefusesAnythingElse) {
    for (const std::string_view text :
         {"", "2001", "2001-01-01", "2001-01-01T00:00:00", "2001-01-01T00:00:00+00:00",
          "2001-01-01 00:00:00Z", "2001-01-01T00:00:00ZZ", "2001-13-01T00:00:00Z",
          "2001-01-00T00:00:00Z", "2001-01-01T24:00:00Z", "2001-01-01T00:60:00Z",
          "2001-01-01T00:00:60Z", "2001-01-01T00:00:00.Z", "2001-1-01T00:00:00Z",
          "-001-01-01T00:00:00Z", "2001-01-01T00:00:0\xC3\xA9Z"}) {
        EXPECT_FALSE(NS::secondsFromIso8601(text)) << text;
    }
}

} // namespace
