#include "Platform/Foundation/Number.h"

#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

using NS::Number;

constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kMaxUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

NS::Ref<Number> integer(std::int64_t value) {
    return Number::numberWithLongLong(value);
}
NS::Ref<Number> unsignedInteger(std::uint64_t value) {
    return Number::numberWithUnsignedLongLong(value);
}
NS::Ref<Number> real(double value) {
    return Number::numberWithDouble(value);
}

TEST(Number, RemembersItsType) {
    EXPECT_EQ(Number::numberWithBool(true)->type(), Number::Type::kBoolean);
    EXPECT_EQ(Number::numberWithInt(1)->type(), Number::Type::kInteger);
    EXPECT_EQ(integer(1)->type(), Number::Type::kInteger);
    EXPECT_EQ(unsignedInteger(1)->type(), Number::Type::kUnsigned);
    EXPECT_EQ(Number::numberWithFloat(1)->type(), Number::Type::kFloat);
    EXPECT_EQ(real(1)->type(), Number::Type::kDouble);
}

TEST(Number, GivesBackTheLimitsOfItsType) {
    EXPECT_EQ(integer(kMin64)->longLongValue(), kMin64);
    EXPECT_EQ(integer(kMax64)->longLongValue(), kMax64);
    EXPECT_EQ(unsignedInteger(kMaxUnsigned)->unsignedLongLongValue(), kMaxUnsigned);
    EXPECT_EQ(Number::numberWithInt(kMin32)->intValue(), kMin32);
    EXPECT_EQ(Number::numberWithInt(-1)->longLongValue(), -1);
    EXPECT_EQ(real(std::numeric_limits<double>::max())->doubleValue(),
              std::numeric_limits<double>::max());
}

struct RealAsInteger {
    double value;
    std::int64_t longLong;
    std::uint64_t unsignedLongLong;
    std::int32_t narrow;
};

constexpr RealAsInteger kRealsAsIntegers[] = {
    {0.9,           0,           0,                   0         },
    {-0.9,          0,           0,                   0         },
    {1.5,           1,           1,                   1         },
    {-1.5,          -1,          0,                   -1        },
    {2147483647.5,  2147483647,  2147483647,          kMax32    },
    {2147483648.0,  2147483648,  2147483648,          kMax32    },
    {-2147483648.5, -2147483648, 0,                   kMin32    },
    {-2147483650.0, -2147483650, 0,                   kMin32    },
    {2147483646.0,  2147483646,  2147483646,          kMax32 - 1},
    {-2147483647.0, -2147483647, 0,                   kMin32 + 1},
    {0x1p63,        kMax64,      0x8000000000000000U, kMax32    },
    {-0x1p63,       kMin64,      0,                   kMin32    },
    {0x1p64,        kMax64,      kMaxUnsigned,        kMax32    },
    {1e300,         kMax64,      kMaxUnsigned,        kMax32    },
    {-1e300,        kMin64,      0,                   kMin32    },
    {kInfinity,     kMax64,      kMaxUnsigned,        kMax32    },
    {-kInfinity,    kMin64,      0,                   kMin32    },
    {kNotANumber,   0,           0,                   0         },
};

TEST(Number, CutsARealOffTowardZeroAndAtTheLimits) {
    for (const RealAsInteger& each : kRealsAsIntegers) {
        EXPECT_EQ(real(each.value)->longLongValue(), each.longLong) << each.value;
        EXPECT_EQ(real(each.value)->unsignedLongLongValue(), each.unsignedLongLong) << each.value;
        EXPECT_EQ(real(each.value)->intValue(), each.narrow) << each.value;
    }
}

struct IntegerAsInteger {
    NS::Ref<Number> number;
    std::int64_t longLong;
    std::int32_t narrow;
};

TEST(Number, HoldsAnIntegerWithinTheLimitsOfANarrowerType) {
    const IntegerAsInteger kCases[] = {
        {integer(kMax32),                            kMax32,                   kMax32    },
        {integer(std::int64_t{kMax32} - 1),          std::int64_t{kMax32} - 1, kMax32 - 1},
        {integer(std::int64_t{kMax32} + 1),          std::int64_t{kMax32} + 1, kMax32    },
        {integer(kMin32),                            kMin32,                   kMin32    },
        {integer(std::int64_t{kMin32} + 1),          std::int64_t{kMin32} + 1, kMin32 + 1},
        {integer(std::int64_t{kMin32} - 1),          std::int64_t{kMin32} - 1, kMin32    },
        {integer(0x100000005),                       0x100000005,              kMax32    },
        {integer(kMax64),                            kMax64,                   kMax32    },
        {integer(kMin64),                            kMin64,                   kMin32    },
        {unsignedInteger(kMax32),                    kMax32,                   kMax32    },
        {unsignedInteger(0xFFFFFFFF),                0xFFFFFFFF,               kMax32    },
        {unsignedInteger(kMax64 - std::uint64_t{1}), kMax64 - 1,               kMax32    },
        {unsignedInteger(kMax64),                    kMax64,                   kMax32    },
        {unsignedInteger(std::uint64_t{kMax64} + 1), kMax64,                   kMax32    },
        {unsignedInteger(kMaxUnsigned),              kMax64,                   kMax32    },
    };
    for (const IntegerAsInteger& each : kCases) {
        EXPECT_EQ(each.number->longLongValue(), each.longLong)
            << each.number->description()->utf8();
        EXPECT_EQ(each.number->intValue(), each.narrow) << each.number->description()->utf8();
    }
}

TEST(Number, GivesTheBitsOfANegativeIntegerWithoutSign) {
    EXPECT_EQ(integer(-1)->unsignedLongLongValue(), kMaxUnsigned);
    EXPECT_EQ(integer(kMin64)->unsignedLongLongValue(), std::uint64_t{1} << 63U);
}

TEST(Number, ConvertsToReals) {
    EXPECT_EQ(integer(-3)->doubleValue(), -3.0);
    EXPECT_EQ(unsignedInteger(kMaxUnsigned)->doubleValue(), 0x1p64);
    EXPECT_EQ(Number::numberWithBool(true)->doubleValue(), 1.0);
    EXPECT_EQ(Number::numberWithFloat(0.1F)->doubleValue(), static_cast<double>(0.1F));
}

TEST(Number, IsTrueUnlessItIsZero) {
    EXPECT_TRUE(Number::numberWithBool(true)->boolValue());
    EXPECT_FALSE(Number::numberWithBool(false)->boolValue());
    EXPECT_TRUE(integer(kMin64)->boolValue());
    EXPECT_TRUE(integer(0x100000000)->boolValue());
    EXPECT_FALSE(integer(0)->boolValue());
    EXPECT_TRUE(real(0.1)->boolValue());
    EXPECT_FALSE(real(-0.0)->boolValue());
    EXPECT_TRUE(real(kNotANumber)->boolValue());
}

using Numbers = std::vector<NS::Ref<Number>>;

template <class... Each>
Numbers row(const Each&... numbers) {
    return {numbers...};
}

// The numbers of a row are equal, and below those of the next.
std::vector<Numbers> ascending() {
    const auto single = &Number::numberWithFloat;
    const auto boolean = &Number::numberWithBool;
    return {
        row(real(kNotANumber), real(-kNotANumber), single(std::nanf(""))),
        row(real(-kInfinity), single(-HUGE_VALF)),
        row(real(std::nextafter(-0x1p63, -kInfinity))),
        row(integer(kMin64), real(-0x1p63)),
        row(integer(kMin64 + 1)),
        row(integer(-1), real(-1), single(-1)),
        row(real(-0.5), single(-0.5F)),
        row(integer(0), real(0.0), real(-0.0), unsignedInteger(0), boolean(false)),
        row(real(std::numeric_limits<double>::denorm_min())),
        row(integer(1), real(1), unsignedInteger(1), boolean(true)),
        row(real(1.5), single(1.5F)),
        row(integer(0x20000000000000), real(0x1p53), unsignedInteger(0x20000000000000)),
        row(integer(0x20000000000001), unsignedInteger(0x20000000000001)), // in no double
        row(integer(0x20000000000002), real(0x1p53 + 2)),
        row(integer(kMax64), unsignedInteger(kMax64)),
        row(unsignedInteger(0x8000000000000000U), real(0x1p63)),
        row(unsignedInteger(kMaxUnsigned)),
        row(real(0x1p64)),
        row(real(kInfinity), single(HUGE_VALF)),
    };
}

TEST(Number, ComparesByExactValueWhateverTheTypes) {
    const auto rows = ascending();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < rows.size(); ++j) {
            for (const auto& a : rows[i]) {
                for (const auto& b : rows[j]) {
                    const int expected = i == j ? 0 : (i < j ? -1 : 1);
                    ASSERT_EQ(a->compare(*b), expected) << "rows " << i << " and " << j;
                    ASSERT_EQ(a->isEqual(b.get()), i == j) << "rows " << i << " and " << j;
                }
            }
        }
    }
}

TEST(Number, HashesEqualNumbersAlike) {
    for (const auto& row : ascending()) {
        for (const auto& each : row) {
            EXPECT_EQ(each->hash(), row.front()->hash()) << each->description()->utf8();
        }
    }
}

TEST(Number, EqualsNumbersOnly) {
    EXPECT_FALSE(integer(1)->isEqual(NS::str("1").get()));
    EXPECT_FALSE(integer(1)->isEqual(nullptr));
    EXPECT_TRUE(integer(1)->isEqualTo(real(1).get()));
}

struct Described {
    NS::Ref<Number> number;
    const char* text;
};

TEST(Number, DescribesItselfByItsType) {
    const Described kCases[] = {
        {Number::numberWithBool(true),         "1"                   },
        {Number::numberWithBool(false),        "0"                   },
        {integer(kMin64),                      "-9223372036854775808"},
        {unsignedInteger(kMaxUnsigned),        "18446744073709551615"},
        {Number::numberWithFloat(0.1F),        "0.1"                 },
        {Number::numberWithFloat(16777216.0F), "1.677722e+07"        },
        {real(0.1),                            "0.1"                 },
        {real(1.0 / 3),                        "0.3333333333333333"  },
        {real(100),                            "100"                 },
        {real(1e16),                           "1e+16"               },
        {real(1e15),                           "1000000000000000"    },
        {real(-0.0),                           "-0"                  },
        {real(kInfinity),                      "inf"                 },
        {real(-kInfinity),                     "-inf"                },
        {real(kNotANumber),                    "nan"                 },
    };
    for (const Described& each : kCases) {
        EXPECT_EQ(each.number->description()->utf8(), each.text);
    }
}

TEST(NumberOfAnyValue, ReadsNumbersAndTexts) {
    const NS::RefPtr<NS::Object> number = real(2.9);
    const NS::RefPtr<NS::Object> text = NS::str(" 7 pieces");
    EXPECT_EQ(NS::longLongValue(number), 2);
    EXPECT_EQ(NS::longLongValue(text), 7);
    EXPECT_EQ(NS::intValue(number), 2);
    EXPECT_EQ(NS::intValue(text), 7);
    EXPECT_EQ(NS::doubleValue(number), 2.9);
    EXPECT_EQ(NS::doubleValue(text), 7.0);
    EXPECT_TRUE(NS::boolValue(number));
    EXPECT_TRUE(NS::boolValue(NS::RefPtr<NS::Object>(NS::str("yes"))));
}

TEST(NumberOfAnyValue, IsZeroForNil) {
    EXPECT_EQ(NS::longLongValue(nullptr), 0);
    EXPECT_EQ(NS::intValue(nullptr), 0);
    EXPECT_EQ(NS::doubleValue(nullptr), 0.0);
    EXPECT_FALSE(NS::boolValue(nullptr));
}

TEST(NumberOfAnyValue, RaisesForWhatIsNeither) {
    const NS::RefPtr<NS::Object> object = NS::make<NS::Object>();
    EXPECT_EQ(Tests::nameOfException([&] { (void)NS::longLongValue(object); }),
              NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::nameOfException([&] { (void)NS::boolValue(object); }),
              NS::kInvalidArgumentException);
}

} // namespace
