#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace {

using NS::str;

constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();

struct Integer {
    const char* text;
    std::int64_t wide;
    std::int32_t narrow;
};

constexpr Integer kIntegers[] = {
    {"",                            0,                  0         },
    {"0",                           0,                  0         },
    {"42",                          42,                 42        },
    {"-42",                         -42,                -42       },
    {"+42",                         42,                 42        },
    {"  \t\n\r\v\f42",              42,                 42        },
    {"\xC2\xA0\xE3\x80\x80"
     "7",                      7,                  7         }, // Unicode's own blanks
    {"42abc",                       42,                 42        },
    {"42.9",                        42,                 42        },
    {"1e3",                         1,                  1         },
    {"0x10",                        0,                  0         },
    {"abc",                         0,                  0         },
    {"-",                           0,                  0         },
    {"+-5",                         0,                  0         },
    {"- 5",                         0,                  0         },
    {"000123",                      123,                123       },
    {"999999999",                   999999999,          999999999 },
    {"1000000000",                  1000000000,         1000000000},
    {"2147483647",                  2147483647,         kMax32    },
    {"2147483648",                  2147483648,         kMax32    },
    {"-2147483648",                 -2147483648,        kMin32    },
    {"-2147483649",                 -2147483649,        kMin32    },
    {"999999999999999999",          999999999999999999, kMax32    },
    {"9223372036854775807",         kMax64,             kMax32    },
    {"9223372036854775808",         kMax64,             kMax32    },
    {"-9223372036854775808",        kMin64,             kMin32    },
    {"-9223372036854775809",        kMin64,             kMin32    },
    {"99999999999999999999999999",  kMax64,             kMax32    },
    {"-99999999999999999999999999", kMin64,             kMin32    },
    {"\xD9\xA3",                    0,                  0         }, // digits of other scripts are none
    {"12\xC3\xA9",                  12,                 12        },
};

TEST(StringNumbers, ReadLeadingIntegersWithinTheLimitsOfTheType) {
    for (const Integer& each : kIntegers) {
        EXPECT_EQ(str(each.text)->longLongValue(), each.wide) << each.text;
        EXPECT_EQ(str(each.text)->intValue(), each.narrow) << each.text;
    }
}

TEST(StringNumbers, ReadBackEveryIntegerThatWasWritten) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 2000; ++round) {
        const auto value =
            static_cast<std::int64_t>(random() >> (random() % 64U)) * (random() % 2U == 0 ? 1 : -1);
        ASSERT_EQ(str(std::to_string(value))->longLongValue(), value);
    }
}

struct Real {
    const char* text;
    double value;
};

const Real kReals[] = {
    {"",                        0                                        },
    {"1",                       1                                        },
    {"1.5",                     1.5                                      },
    {"-1.5",                    -1.5                                     },
    {"+.5",                     0.5                                      },
    {"5.",                      5                                        },
    {" \t2.5e3x",               2500                                     },
    {"1e-3",                    0.001                                    },
    {"1E+2",                    100                                      },
    {"1e",                      1                                        },
    {"1e+",                     1                                        },
    {"1.2.3",                   1.2                                      },
    {"0x10",                    0                                        },
    {"1,5",                     1                                        },
    {"inf",                     0                                        },
    {"nan",                     0                                        },
    {"e5",                      0                                        },
    {"--1",                     0                                        },
    {".",                       0                                        },
    {"1.5\xC3\xA9",             1.5                                      },
    {"\xC2\xA0"
     "2.5",                2.5                                      },
    {"1.7976931348623157e308",  std::numeric_limits<double>::max()       },
    {"1e309",                   HUGE_VAL                                 },
    {"-1e309",                  -HUGE_VAL                                },
    {"1e99999999999999999999",  HUGE_VAL                                 },
    {"1e-400",                  0                                        },
    {"1e-99999999999999999999", 0                                        },
    {"4.9406564584124654e-324", std::numeric_limits<double>::denorm_min()},
};

TEST(StringNumbers, ReadLeadingRealsInEveryLocaleAlike) {
    for (const Real& each : kReals) {
        EXPECT_EQ(str(each.text)->doubleValue(), each.value) << each.text;
    }
}

TEST(StringNumbers, TellRealsThatAreTooLargeFromThoseThatAreTooSmall) {
    EXPECT_EQ(str(std::string(400, '9'))->doubleValue(), HUGE_VAL);
    EXPECT_EQ(str(std::string(400, '9') + "e-5")->doubleValue(), HUGE_VAL);
    EXPECT_EQ(str("0." + std::string(400, '0') + "1")->doubleValue(), 0.0);
    EXPECT_EQ(str("0." + std::string(400, '0') + "1e5")->doubleValue(), 0.0);
    EXPECT_EQ(str("0." + std::string(400, '0') + "1e800")->doubleValue(), HUGE_VAL);
    EXPECT_EQ(str(std::string(400, '9') + "e-800")->doubleValue(), 0.0);
}

TEST(StringNumbers, KeepTheSignOfZero) {
    EXPECT_TRUE(std::signbit(str("-0.0")->doubleValue()));
    EXPECT_FALSE(std::signbit(str("0.0")->doubleValue()));
}

struct Boolean {
    const char* text;
    bool value;
};

constexpr Boolean kBooleans[] = {
    {"",          false},
    {"0",         false},
    {"00",        false},
    {"1",         true },
    {"9",         true },
    {"Y",         true },
    {"y",         true },
    {"YES",       true },
    {"yes",       true },
    {"T",         true },
    {"t",         true },
    {"true",      true },
    {"N",         false},
    {"no",        false},
    {"false",     false},
    {"F",         false},
    {"  1",       true },
    {"\n yes",    true },
    {"+1",        true },
    {"-1",        true },
    {"-0",        false},
    {"-007",      true },
    {"+00y",      true },
    {"0.5",       false},
    {"0x1",       false},
    {"x",         false},
    {"--1",       false},
    {"on",        false},
    {"\xC3\xA9",  false},
    {"1\xC3\xA9", true },
};

TEST(StringNumbers, ReadBooleansAsThePlatformDoes) {
    for (const Boolean& each : kBooleans) {
        EXPECT_EQ(str(each.text)->boolValue(), each.value) << each.text;
    }
}

} // namespace
