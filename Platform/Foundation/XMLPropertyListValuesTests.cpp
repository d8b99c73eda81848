#include "Platform/Foundation/XMLPropertyListValues.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(XMLPropertyListValues, ReadIntegersUpToTheirLimits) {
    struct Row {
        std::string_view text;
        std::uint64_t magnitude;
        bool isNegative;
    };
    constexpr Row kRows[] = {
        {"0",                    0,                                         false},
        {"-0",                   0,                                         true },
        {"+12",                  12,                                        false},
        {" \n12\t",              12,                                        false},
        {"007",                  7,                                         false},
        {"0xfF",                 255,                                       false},
        {"-0X10",                16,                                        true },
        {"18446744073709551615", std::numeric_limits<std::uint64_t>::max(), false},
        {"-9223372036854775808", std::uint64_t{1} << 63U,                   true },
    };
    for (const Row& row : kRows) {
        const auto integer = NS::integerFromXML(row.text);
        ASSERT_TRUE(integer) << row.text;
        EXPECT_EQ(integer->magnitude, row.magnitude) << row.text;
        EXPECT_EQ(integer->isNegative, row.isNegative) << row.text;
    }
}

TEST(XMLPropertyListValues, RefuseWhatIsNoIntegerOf64Bits) {
    for (const std::string_view text :
         {"", " ", "-", "+-1", "--1", "1.0", "1e3", "1 2", "0x", "x10", "12a",
          "-9223372036854775809", "18446744073709551616", "0x10000000000000000"}) {
        EXPECT_FALSE(NS::integerFromXML(text)) << text;
    }
}

TEST(XMLPropertyListValues, ReadRealNumbers) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr std::pair<std::string_view, double> kRows[] = {
        {"0",                      0                     },
        {" -1.5e3\n",              -1500                 },
        {"+.5",                    0.5                   },
        {"0.1",                    0.1                   },
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"inf",                    kInfinity             },
        {"-infinity",              -kInfinity            },
        {"+Infinity",              kInfinity             },
        {"1e400",                  kInfinity             },
        {"-1e400",                 -kInfinity            },
        {"1e-400",                 0                     },
    };
    for (const auto& [text, real] : kRows) {
        EXPECT_EQ(NS::realFromXML(text), real) << text;
    }
    EXPECT_TRUE(std::isnan(NS::realFromXML("nan").value()));
}

TEST(XMLPropertyListValues, RefuseWhatIsNoRealNumber) {
    for (const std::string_view text :
         {"", "-", "1,5", "1.5 2", "0x10", "+-1", "--1", "-+1", "e5"}) {
        EXPECT_FALSE(NS::realFromXML(text)) << text;
    }
}

TEST(XMLPropertyListValues, ReadDates) {
    EXPECT_EQ(NS::dateFromXML("2001-01-01T00:00:01Z"), 1.0);
    EXPECT_EQ(NS::dateFromXML(" \r\n\t2001-01-01T00:00:01Z\n "), 1.0);
    for (const std::string_view text : {"", " ", "2001-01-01", "2001-01-01 T00:00:01Z"}) {
        EXPECT_FALSE(NS::dateFromXML(text)) << text;
    }
}

} // namespace
