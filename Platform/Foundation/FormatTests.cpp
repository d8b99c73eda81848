#include "Platform/Foundation/Format.h"

#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <string_view>

namespace {

template <class... Args>
std::string format(std::string_view text, const Args&... arguments) {
    return NS::stringWithFormat(text, arguments...)->utf8();
}

// What the C library makes of a format that was put together at run time.
template <class Argument>
std::string printed(const std::string& text, Argument argument) {
    std::array<char, 1024> buffer{};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    const int length = std::snprintf(buffer.data(), buffer.size(), text.c_str(), argument);
#pragma GCC diagnostic pop
    return length < 0 ? "no format" : std::string(buffer.data(), static_cast<std::size_t>(length));
}

TEST(Format, CopiesTextAsItIs) {
    EXPECT_EQ(format(""), "");
    EXPECT_EQ(format("plain"), "plain");
    EXPECT_EQ(format("caf\xC3\xA9 %d", 1), "caf\xC3\xA9 1");
    EXPECT_EQ(format("100%%"), "100%");
    EXPECT_EQ(format("%%%d%%", 5), "%5%");
}

TEST(Format, InsertsObjectsByTheirDescription) {
    const auto text = NS::str("text");
    const NS::RefPtr<NS::Object> nothing;
    EXPECT_EQ(format("<%@>", text), "<text>");
    EXPECT_EQ(format("<%@>", NS::RefPtr<NS::Object>(text)), "<text>");
    EXPECT_EQ(format("<%@>", text.get()), "<text>");
    EXPECT_EQ(format("%@ and %@", nothing, nullptr), "(null) and (null)");
    EXPECT_EQ(format("%@", NS::Number::numberWithDouble(1.5)), "1.5");
    EXPECT_EQ(format("%@", NS::str("\xE6\x97\xA5")), "\xE6\x97\xA5");
}

TEST(Format, PadsAndCutsObjects) {
    const auto text = NS::str("\xC3\xA9"
                              "bc");
    EXPECT_EQ(format("[%5@]", text), "[  \xC3\xA9"
                                     "bc]");
    EXPECT_EQ(format("[%-5@]", text), "[\xC3\xA9"
                                      "bc  ]");
    EXPECT_EQ(format("[%.2@]", text), "[\xC3\xA9"
                                      "b]");
    EXPECT_EQ(format("[%4.1@]", text), "[   \xC3\xA9]");
}

TEST(Format, InsertsTexts) {
    EXPECT_EQ(format("%s", "abc"), "abc");
    EXPECT_EQ(format("[%5s|%-5s|%.2s]", "abc", "abc", "abc"), "[  abc|abc  |ab]");
    EXPECT_EQ(format("%s", static_cast<const char*>(nullptr)), "(null)");
    EXPECT_EQ(format("%s", "caf\xC3\xA9"), "caf\xC3\xA9");
}

TEST(Format, ReadsNoFurtherThanThePrecisionOfAText) {
    const std::array<char, 3> unterminated = {'a', 'b', 'c'};
    EXPECT_EQ(format("%.3s", unterminated.data()), "abc");
}

TEST(Format, KeepsBytesOfATextThatAreNotUtf8) {
    EXPECT_EQ(NS::stringWithFormat("%s", "a\xFF")->fileSystemRepresentation(), "a\xFF");
    EXPECT_EQ(NS::stringWithFormat("\xFE%d", 1)->fileSystemRepresentation(), "\xFE"
                                                                             "1");
}

TEST(Format, InsertsCharacters) {
    EXPECT_EQ(format("%c%c", 'a', 98), "ab");
    EXPECT_EQ(format("%C%C", 0xE9, 0x65E5), "\xC3\xA9\xE6\x97\xA5");
    EXPECT_EQ(format("[%3c]", 'x'), "[  x]");
    EXPECT_EQ(format("a%cb", 0), std::string("a\0b", 3));
}

TEST(Format, InsertsAddresses) {
    const auto* const pointer = reinterpret_cast<const void*>(0xBEEF);
    EXPECT_EQ(format("%p", pointer), "0xbeef");
    EXPECT_EQ(format("[%10p]", pointer), "[    0xbeef]");
    EXPECT_EQ(format("%p", static_cast<const void*>(nullptr)), "0x0");
    EXPECT_EQ(format("%p", nullptr), "0x0");
    const auto object = NS::make<NS::Object>();
    EXPECT_EQ(format("<NSObject: %p>", object), object->description()->utf8());
}

TEST(Format, TakesArgumentsByPosition) {
    EXPECT_EQ(format("%2$@ %1$@", NS::str("a"), NS::str("b")), "b a");
    EXPECT_EQ(format("%1$d %1$x %1$03d", 10), "10 a 010");
    EXPECT_EQ(format("%2$s %s", "a", "b"), "b a");
}

TEST(Format, TakesWidthAndPrecisionFromArguments) {
    EXPECT_EQ(format("[%*d]", 5, 42), "[   42]");
    EXPECT_EQ(format("[%*d]", -5, 42), "[42   ]");
    EXPECT_EQ(format("[%.*f]", 2, 1.005), "[1.00]");
    EXPECT_EQ(format("[%.*f]", -1, 1.5), "[1.500000]");
    EXPECT_EQ(format("[%*.*@]", 4, 1, NS::str("ab")), "[   a]");
}

TEST(Format, CutsIntegersToTheWidthOfTheirModifier) {
    const std::int64_t wide = 0x1234567890ABCDEF;
    EXPECT_EQ(format("%llx %lx %x %hx %hhx", wide, wide, wide, wide, wide),
              "1234567890abcdef 1234567890abcdef 90abcdef cdef ef");
    EXPECT_EQ(format("%d", std::int64_t{0xFFFFFFFF}), "-1");
    EXPECT_EQ(format("%hhd", 255), "-1");
    EXPECT_EQ(format("%u", -1), "4294967295");
    EXPECT_EQ(format("%zu %ju %tu %qu", wide, wide, wide, wide),
              "1311768467294899695 1311768467294899695 1311768467294899695 1311768467294899695");
}

TEST(Format, InsertsTheLimitsOfTheIntegerTypes) {
    EXPECT_EQ(format("%lld", std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(format("%llu", std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(format("%d", std::numeric_limits<std::int32_t>::min()), "-2147483648");
    EXPECT_EQ(format("%d %d", true, false), "1 0");
}

TEST(Format, InsertsWhatIsNoFiniteNumber) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(format("%f %+F %e", kInfinity, kInfinity, -kInfinity), "inf +INF -inf");
    EXPECT_EQ(format("[%05f|%-5g]", kInfinity, kInfinity), "[  inf|inf  ]");
    EXPECT_EQ(format("%f %A", std::nan(""), std::nan("")), "nan NAN");
}

// Any flags, a width, a precision: what may stand between "%" and the conversion.
std::string randomSpecification(std::mt19937_64& random) {
    std::string text = "%";
    for (const char flag : std::string_view("-+ #0")) {
        if (random() % 3 == 0) {
            text += flag;
        }
    }
    if (random() % 2 == 0) {
        text += std::to_string(1 + random() % 30);
    }
    if (random() % 2 == 0) {
        text += "." + (random() % 5 == 0 ? "" : std::to_string(random() % 25));
    }
    return text;
}

// Of every magnitude, with the special ones often.
std::uint64_t randomInteger(std::mt19937_64& random) {
    constexpr std::uint64_t kSpecial[] = {0,
                                          1,
                                          7,
                                          8,
                                          0x7F,
                                          0x80,
                                          0xFF,
                                          0x7FFF,
                                          0x8000,
                                          0x7FFFFFFF,
                                          0x80000000,
                                          0xFFFFFFFF,
                                          0x7FFFFFFFFFFFFFFF,
                                          0x8000000000000000,
                                          ~0ULL};
    return random() % 3 == 0 ? kSpecial[random() % std::size(kSpecial)]
                             : random() >> (random() % 64);
}

TEST(Format, WritesIntegersAsTheCLibraryDoes) {
    std::mt19937_64 random(1);
    for (int round = 0; round < 20000; ++round) {
        const std::string start = randomSpecification(random);
        const char letter = "diuoxX"[random() % 6];
        const std::uint64_t value = randomInteger(random);
        // A sign with an unsigned conversion means nothing, and the library says so to compilers.
        ASSERT_EQ(format(start + "ll" + letter, value), printed(start + "ll" + letter, value));
        const auto narrow = static_cast<int>(value);
        for (const char* length : {"", "h", "hh"}) {
            const std::string text = start + length + letter;
            ASSERT_EQ(format(text, narrow), printed(text, narrow)) << text << " of " << narrow;
        }
    }
}

double randomReal(std::mt19937_64& random) {
    constexpr double kSpecial[] = {0.0,      -0.0, 1.0,   0.5,       9.5,  99.95,
                                   1e15,     1e16, 1e-4,  9.9999e-5, 0.1,  123456.0,
                                   999999.5, 1e22, 1e100, 2.5,       -3.5, 1e-10};
    switch (random() % 3) {
    case 0:
        return kSpecial[random() % std::size(kSpecial)];
    case 1:
        return static_cast<double>(static_cast<std::int64_t>(random())) /
               std::pow(10.0, static_cast<double>(random() % 30));
    default:
        for (;;) {
            const auto value = std::bit_cast<double>(random());
            if (std::isnormal(value)) {
                return value;
            }
        }
    }
}

TEST(Format, WritesRealsAsTheCLibraryDoes) {
    std::mt19937_64 random(2);
    for (int round = 0; round < 20000; ++round) {
        const std::string start = randomSpecification(random);
        const bool alternate = start.find('#') != std::string::npos;
        // The library loses zeros of "%#g" where rounding adds a digit.
        const char letter = alternate ? "fFeE"[random() % 4] : "fFeEgG"[random() % 6];
        const std::string text = start + letter;
        const double value = randomReal(random);
        ASSERT_EQ(format(text, value), printed(text, value)) << text << " of " << value;
    }
}

struct General {
    const char* format;
    double value;
    const char* text;
};

constexpr General kGenerals[] = {
    {"%#g",      0.0,      "0.00000"    },
    {"%#g",      1.0,      "1.00000"    },
    {"%#g",      123456.0, "123456."    },
    {"%#g",      999999.5, "1.00000e+06"},
    {"%#g",      0.0001,   "0.000100000"},
    {"%#g",      0.00001,  "1.00000e-05"},
    {"%#.0g",    0.5,      "0.5"        },
    {"%#.0g",    3.0,      "3."         },
    {"%#.0g",    10.0,     "1.e+01"     },
    {"%#.3G",    1e10,     "1.00E+10"   },
    {"%#010.3g", -1.0,     "-000001.00" },
};

TEST(Format, KeepsTheZerosOfAnAlternateGeneralReal) {
    for (const General& each : kGenerals) {
        EXPECT_EQ(format(each.format, each.value), each.text) << each.format;
    }
}

TEST(Format, WritesHexadecimalRealsAsTheCLibraryDoes) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = randomSpecification(random) + "aA"[random() % 2];
        const double value = randomReal(random);
        ASSERT_EQ(format(text, value), printed(text, value)) << text << " of " << value;
    }
}

TEST(Format, WritesTheSmallestRealsAsTheCLibraryDoes) {
    for (const double value :
         {std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::min() / 3}) {
        for (const char* text : {"%g", "%e", "%.20f", "%.400f", "%.17g", "%a"}) {
            EXPECT_EQ(format(text, value), printed(text, value)) << text;
        }
    }
}

TEST(Format, WritesTextsAsTheCLibraryDoes) {
    std::mt19937_64 random(4);
    for (int round = 0; round < 2000; ++round) {
        const std::string width = random() % 2 == 0 ? std::to_string(1 + random() % 12) : "";
        const std::string precision = random() % 2 == 0 ? "." + std::to_string(random() % 6) : "";
        const std::string text = (random() % 2 == 0 ? "%-" : "%") + width + precision + "s";
        const std::string value(random() % 10, 'x');
        ASSERT_EQ(format(text, value.c_str()), printed(text, value.c_str())) << text;
    }
}

TEST(Format, DoesNotFollowTheLocale) {
    // "%'d" groups digits by the locale and is no flag here.
    EXPECT_EQ(format("%.2f", 1234.5), "1234.50");
    EXPECT_EQ(Tests::nameOfException([] { (void)format("%'d", 1); }),
              NS::kInvalidArgumentException);
}

struct WrongFormat {
    const char* format;
    const char* why;
};

constexpr WrongFormat kWrongFormats[] = {
    {"%",                         "it ends within a conversion"                                },
    {"%5",                        "it ends within a conversion"                                },
    {"%-+ #0",                    "it ends within a conversion"                                },
    {"%.",                        "it ends within a conversion"                                },
    {"%ll",                       "it ends within a conversion"                                },
    {"%y",                        "it has a conversion that does not exist"                    },
    {"%n",                        "it has a conversion that does not exist"                    },
    {"%5%",                       "it has a conversion that does not exist"                    },
    {"\xC3\xA9%\xC3\xA9",         "it has a conversion that does not exist"                    },
    {"%d%d",                      "it has more conversions than there are arguments"           },
    {"%2$d",                      "it has more conversions than there are arguments"           },
    {"%*d",                       "it has more conversions than there are arguments"           },
    {"%99999$d",                  "a number in it is too large"                                },
    {"%99999d",                   "a number in it is too large"                                },
    {"%.99999d",                  "a number in it is too large"                                },
    {"%99999999999999999999999d", "a number in it is too large"                                },
    {"%@",                        "\"%@\" asks for an object and gets something else"          },
    {"%s",                        "\"%s\" asks for a text and gets something else"             },
    {"%p",                        "\"%p\" asks for a pointer and gets something else"          },
    {"%f",                        "a conversion asks for a real number and gets something else"},
};

TEST(Format, RaisesWhenItDoesNotFitItsArguments) {
    for (const WrongFormat& each : kWrongFormats) {
        const auto act = [&] {
            (void)NS::stringWithFormat(each.format, 1);
        };
        EXPECT_EQ(Tests::nameOfException(act), NS::kInvalidArgumentException) << each.format;
        EXPECT_EQ(Tests::reasonOfException(act),
                  "format \"" + std::string(each.format) + "\": " + each.why);
    }
}

TEST(Format, RaisesForArgumentsOfOtherKinds) {
    for (const char* text : {"%d", "%x", "%c", "%C", "%*d", "%.*d"}) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)format(text, 1.5, 1); }),
                  NS::kInvalidArgumentException)
            << text;
    }
    EXPECT_EQ(Tests::nameOfException([] { (void)format("%s", NS::str("a")); }),
              NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::nameOfException([] { (void)format("%@", "a"); }),
              NS::kInvalidArgumentException);
}

TEST(Format, RaisesForAWidthThatIsTooLargeForAnyone) {
    for (const std::int64_t width :
         {std::numeric_limits<std::int64_t>::min(), std::int64_t{-65537}, std::int64_t{65537},
          std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)format("%*d", width, 1); }),
                  NS::kInvalidArgumentException)
            << width;
    }
    EXPECT_EQ(format("%65536d", 1).size(), 65536U);
    EXPECT_EQ(format("%.65536f", 1e308).size(), 309U + 1U + 65536U);
}

TEST(Format, AppendsToATextThatIsBeingPutTogether) {
    NS::StringBuilder text;
    text.appendAscii("<");
    const NS::FormatArgument one[] = {1};
    NS::appendFormatWithArguments(text, "%d>", one);
    EXPECT_EQ(text.ascii(), "<1>");
    NS::appendFormatWithArguments(text, "\xC3\xA9%d", one);
    EXPECT_FALSE(text.isAscii());
    EXPECT_EQ(text.string()->utf8(), "<1>\xC3\xA9"
                                     "1");
}

TEST(Format, LeavesArgumentsOutThatItDoesNotAskFor) {
    EXPECT_EQ(format("%d", 1, 2, NS::str("x")), "1");
}

} // namespace
