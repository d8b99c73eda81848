#include "Platform/Foundation/Utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

struct Valid {
    const char* name;
    std::string_view bytes;
    char32_t codePoint;
};

// The first and last code point of every length, and the neighbours of the surrogates.
constexpr Valid kValid[] = {
    {"the first of all",               "\0"sv,               0       },
    {"the last of one byte",           "\x7F"sv,             0x7F    },
    {"the first of two bytes",         "\xC2\x80"sv,         0x80    },
    {"the last of two bytes",          "\xDF\xBF"sv,         0x7FF   },
    {"the first of three bytes",       "\xE0\xA0\x80"sv,     0x800   },
    {"the last before the surrogates", "\xED\x9F\xBF"sv,     0xD7FF  },
    {"the first after the surrogates", "\xEE\x80\x80"sv,     0xE000  },
    {"the last of three bytes",        "\xEF\xBF\xBF"sv,     0xFFFF  },
    {"the first of four bytes",        "\xF0\x90\x80\x80"sv, 0x10000 },
    {"the last of all",                "\xF4\x8F\xBF\xBF"sv, 0x10FFFF},
};

struct Invalid {
    const char* name;
    std::string_view bytes;
};

constexpr Invalid kInvalid[] = {
    {"a continuation byte alone",             "\x80"sv                    },
    {"the last continuation byte alone",      "\xBF"sv                    },
    {"an overlong form of two bytes",         "\xC0\xAF"sv                },
    {"the last overlong form of two bytes",   "\xC1\xBF"sv                },
    {"an overlong form of three bytes",       "\xE0\x80\xAF"sv            },
    {"the last overlong form of three bytes", "\xE0\x9F\xBF"sv            },
    {"an overlong form of four bytes",        "\xF0\x80\x80\xAF"sv        },
    {"the last overlong form of four bytes",  "\xF0\x8F\xBF\xBF"sv        },
    {"the first high surrogate",              "\xED\xA0\x80"sv            },
    {"the last low surrogate",                "\xED\xBF\xBF"sv            },
    {"the first beyond the last code point",  "\xF4\x90\x80\x80"sv        },
    {"far beyond the last code point",        "\xF7\xBF\xBF\xBF"sv        },
    {"a form of five bytes",                  "\xF8\x88\x80\x80\x80"sv    },
    {"a form of six bytes",                   "\xFC\x84\x80\x80\x80\x80"sv},
    {"a byte that leads nothing",             "\xFE"sv                    },
    {"the last byte",                         "\xFF"sv                    },
    {"two bytes cut short",                   "\xC3"sv                    },
    {"three bytes cut short",                 "\xE2\x82"sv                },
    {"four bytes cut short",                  "\xF0\x9F\x98"sv            },
    {"a continuation that is none",           "\xC3\x28"sv                },
    {"a last continuation that is none",      "\xE2\x82\x28"sv            },
};

TEST(Utf8, DecodesTheLimitsOfEveryLength) {
    for (const Valid& each : kValid) {
        const NS::Utf8::Decoded decoded = NS::Utf8::decodeFirst(each.bytes);
        EXPECT_TRUE(decoded.valid) << each.name;
        EXPECT_EQ(decoded.codePoint, each.codePoint) << each.name;
        EXPECT_EQ(decoded.length, each.bytes.size()) << each.name;
    }
}

TEST(Utf8, EncodesTheLimitsOfEveryLength) {
    for (const Valid& each : kValid) {
        std::string bytes = "<";
        NS::Utf8::append(bytes, each.codePoint);
        EXPECT_EQ(bytes, "<" + std::string(each.bytes)) << each.name;
    }
}

TEST(Utf8, RefusesWhatIsNotWellFormedOneByteAtATime) {
    for (const Invalid& each : kInvalid) {
        const NS::Utf8::Decoded decoded = NS::Utf8::decodeFirst(each.bytes);
        EXPECT_FALSE(decoded.valid) << each.name;
        EXPECT_EQ(decoded.codePoint, NS::Utf8::kReplacement) << each.name;
        EXPECT_EQ(decoded.length, 1U) << each.name;
    }
}

TEST(Utf8, DecodesNoMoreThanTheFirstCodePoint) {
    EXPECT_EQ(NS::Utf8::decodeFirst("\xC3\xA9\xC3\xA9").length, 2U);
    EXPECT_EQ(NS::Utf8::decodeFirst("ab").length, 1U);
}

TEST(Utf8, ReadsASurrogatePairAsOneCodePoint) {
    const NS::Utf8::FromUtf16 pair = NS::Utf8::codePointAtFront(u"\xD83D\xDE00x");
    EXPECT_EQ(pair.codePoint, 0x1F600U);
    EXPECT_EQ(pair.length, 2U);
}

TEST(Utf8, LeavesALoneSurrogateAsItIs) {
    for (const std::u16string_view units : {u"\xD83D"sv, u"\xD83Dx"sv, u"\xD83D\xD83D"sv}) {
        const NS::Utf8::FromUtf16 first = NS::Utf8::codePointAtFront(units);
        EXPECT_EQ(first.codePoint, 0xD83DU);
        EXPECT_EQ(first.length, 1U);
    }
    EXPECT_EQ(NS::Utf8::codePointAtFront(u"\xDE00\xD83D").codePoint, 0xDE00U);
}

TEST(Utf8, WritesUtf16AsItReadsIt) {
    for (const Valid& each : kValid) {
        std::u16string units;
        NS::Utf8::appendUtf16(units, each.codePoint);
        const NS::Utf8::FromUtf16 read = NS::Utf8::codePointAtFront(units);
        EXPECT_EQ(read.codePoint, each.codePoint) << each.name;
        EXPECT_EQ(read.length, units.size()) << each.name;
    }
}

TEST(Utf8, KnowsTheBytesThatALoneSurrogateCanStandFor) {
    EXPECT_FALSE(NS::Utf8::isEscapedByte(0xDC7F));
    EXPECT_TRUE(NS::Utf8::isEscapedByte(0xDC80));
    EXPECT_TRUE(NS::Utf8::isEscapedByte(0xDCFF));
    EXPECT_FALSE(NS::Utf8::isEscapedByte(0xDD00));
}

TEST(Utf8, KnowsAscii) {
    EXPECT_TRUE(NS::Utf8::isAscii(""));
    EXPECT_TRUE(NS::Utf8::isAscii("\0a\x7F"sv));
    EXPECT_FALSE(NS::Utf8::isAscii("a\x80"));
}

TEST(Utf8, IsValidWhenAllCharactersAre) {
    EXPECT_TRUE(NS::Utf8::isValid(""));
    std::string all;
    for (const Valid& each : kValid) {
        EXPECT_TRUE(NS::Utf8::isValid(each.bytes)) << each.name;
        all.append("text and ").append(each.bytes);
    }
    EXPECT_TRUE(NS::Utf8::isValid(all));
}

TEST(Utf8, IsNotValidWhereverABadByteIs) {
    for (std::size_t at = 0; at < 80; ++at) {
        std::string text(80, 'a');
        text.replace(at, 1, "\u00E9");
        EXPECT_TRUE(NS::Utf8::isValid(text)) << at;
        text.erase(at, 1);
        EXPECT_FALSE(NS::Utf8::isValid(text)) << at;
    }
}

TEST(Utf8, IsNotValidWhenACharacterIsCutOff) {
    for (const std::string text : {"\u00E9", "\u2014", "\U0001F40B"}) {
        for (std::size_t length = 1; length < text.size(); ++length) {
            EXPECT_FALSE(NS::Utf8::isValid(text.substr(0, length)));
            EXPECT_FALSE(NS::Utf8::isValid(text.substr(0, length) + "abc"));
        }
    }
}

} // namespace
