#include "Platform/Foundation/String.h"

#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;
using NS::str;

NS::Ref<NS::String> utf16(std::u16string_view units) {
    return NS::String::fromUtf16(units);
}

TEST(String, HoldsUtf8AsUtf16) {
    const auto text = str("a\xC3\xA9\xF0\x9F\x98\x80");
    ASSERT_EQ(text->length(), 4U);
    EXPECT_EQ(text->characterAtIndex(0), u'a');
    EXPECT_EQ(text->characterAtIndex(1), u'\xE9');
    EXPECT_EQ(text->characterAtIndex(2), u'\xD83D');
    EXPECT_EQ(text->characterAtIndex(3), u'\xDE00');
    EXPECT_EQ(text->utf8(), "a\xC3\xA9\xF0\x9F\x98\x80");
}

TEST(String, CanBeEmpty) {
    const auto text = str("");
    EXPECT_EQ(text->length(), 0U);
    EXPECT_TRUE(text->isAscii());
    EXPECT_EQ(text->utf8(), "");
    EXPECT_TRUE(text->isEqual(utf16(u"").get()));
}

TEST(String, HoldsZeroBytes) {
    const auto text = str("a\0b"sv);
    EXPECT_EQ(text->length(), 3U);
    EXPECT_EQ(text->utf8(), "a\0b"sv);
    EXPECT_FALSE(text->isEqual(str("a").get()));
}

TEST(String, IsNarrowWhereverItCanBe) {
    EXPECT_TRUE(utf16(u"plain")->isAscii());
    EXPECT_EQ(utf16(u"plain")->ascii(), "plain");
    EXPECT_EQ(utf16(u"plain")->utf16(), u"");
    EXPECT_FALSE(str("\xC3\xA9")->isAscii());
    EXPECT_EQ(str("\xC3\xA9")->utf16(), u"\xE9");
    EXPECT_EQ(str("\xC3\xA9")->ascii(), "");
}

TEST(String, IsNarrowAgainWhereAWideTextHasANarrowPart) {
    EXPECT_TRUE(str("ab\xC3\xA9")->substringToIndex(2)->isAscii());
    EXPECT_TRUE(str("ab\xC3\xA9")->substringToIndex(2)->isEqual(str("ab").get()));
}

TEST(String, RefusesWhatIsNotUtf8) {
    for (const auto bytes : {"\x80", "a\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82"}) {
        EXPECT_EQ(NS::String::fromUtf8(bytes), nullptr) << bytes;
        EXPECT_EQ(Tests::nameOfException([&] { (void)str(bytes); }), NS::kInvalidArgumentException);
    }
}

TEST(String, WritesLoneSurrogatesAsTheReplacementCharacter) {
    EXPECT_EQ(utf16(u"a\xD800")->utf8(), "a\xEF\xBF\xBD");
    EXPECT_EQ(utf16(u"\xDC80z")->utf8(), "\xEF\xBF\xBDz");
    EXPECT_EQ(utf16(u"\xDE00\xD83D")->utf8(), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

struct FileName {
    std::string_view bytes;
    std::u16string_view units;
};

// One of every way in which bytes fail to be UTF-8.
constexpr FileName kFileNames[] = {
    {"plain",                u"plain"                   },
    {"caf\xC3\xA9",          u"caf\xE9"                 },
    {"caf\xE9",              u"caf\xDCE9"               },
    {"\x80\xBF",             u"\xDC80\xDCBF"            },
    {"\xC0\xAF",             u"\xDCC0\xDCAF"            },
    {"\xE0\x80\xAF",         u"\xDCE0\xDC80\xDCAF"      },
    {"\xED\xA0\x80",         u"\xDCED\xDCA0\xDC80"      },
    {"\xED\xB2\x80",         u"\xDCED\xDCB2\xDC80"      },
    {"\xF4\x90\x80\x80",     u"\xDCF4\xDC90\xDC80\xDC80"},
    {"\xE2\x82",             u"\xDCE2\xDC82"            },
    {"\xF0\x9F\x98\x80\xFF", u"\xD83D\xDE00\xDCFF"      },
    {"\xF0\x9F\x98",         u"\xDCF0\xDC9F\xDC98"      },
    {"\xEF\xBF\xBD",         u"\xFFFD"                  },
};

TEST(FileSystemRepresentation, KeepsEachByteThatDoesNotDecodeAsALoneSurrogate) {
    for (const FileName& each : kFileNames) {
        const auto text = NS::String::fromFileSystemRepresentation(each.bytes);
        EXPECT_TRUE(text->isEqual(utf16(each.units).get())) << each.bytes;
    }
}

TEST(FileSystemRepresentation, GivesTheBytesBack) {
    for (const FileName& each : kFileNames) {
        EXPECT_EQ(utf16(each.units)->fileSystemRepresentation(), each.bytes);
    }
}

TEST(FileSystemRepresentation, GivesAnyBytesBack) {
    std::mt19937 random(20240611);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 24, '\0');
        for (char& byte : bytes) {
            // Leads, continuations and ASCII about as often, so that near misses come up.
            constexpr std::string_view kPool =
                "\x80\xBF\xA0\x9F\x90\x8F\xC0\xC2\xDF\xE0\xED\xEF\xF0"
                "\xF4\xF5\xFF/a";
            byte = random() % 4 == 0 ? static_cast<char>(random() % 256)
                                     : kPool[random() % kPool.size()];
        }
        const auto text = NS::String::fromFileSystemRepresentation(bytes);
        ASSERT_EQ(text->fileSystemRepresentation(), bytes) << "in round " << round;
        const auto valid = NS::String::fromUtf8(bytes);
        ASSERT_TRUE(!valid || valid->isEqual(text.get())) << "in round " << round;
    }
}

TEST(FileSystemRepresentation, SurvivesBeingTakenApartAndJoined) {
    const auto name = NS::String::fromFileSystemRepresentation("caf\xC3\xA9-\xE9");
    for (std::size_t i = 0; i <= name->length(); ++i) {
        const auto joined =
            name->substringToIndex(i)->stringByAppendingString(*name->substringFromIndex(i));
        EXPECT_EQ(joined->fileSystemRepresentation(), "caf\xC3\xA9-\xE9");
    }
}

TEST(FileSystemRepresentation, HasTheReplacementCharacterForOtherLoneSurrogates) {
    EXPECT_EQ(utf16(u"\xD800")->fileSystemRepresentation(), "\xEF\xBF\xBD");
    EXPECT_EQ(utf16(u"\xDC7F\xDD00")->fileSystemRepresentation(), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(String, RaisesForACharacterOutsideOfIt) {
    EXPECT_EQ(Tests::nameOfException([] { (void)str("ab")->characterAtIndex(2); }),
              NS::kRangeException);
    EXPECT_EQ(Tests::nameOfException([] { (void)str("")->characterAtIndex(0); }),
              NS::kRangeException);
    EXPECT_EQ(Tests::nameOfException([] {
                  (void)str("ab")->characterAtIndex(std::numeric_limits<std::size_t>::max());
              }),
              NS::kRangeException);
}

TEST(String, EqualsTextOfTheSameUnits) {
    EXPECT_TRUE(str("a\xC3\xA9")->isEqual(utf16(u"a\xE9").get()));
    EXPECT_FALSE(str("a")->isEqual(str("A").get()));
    EXPECT_FALSE(str("a")->isEqual(str("ab").get()));
    EXPECT_FALSE(str("a")->isEqual(nullptr));
    EXPECT_FALSE(str("a")->isEqual(NS::make<NS::Object>().get()));
}

TEST(String, ComparesLiterallyWithoutNormalising) {
    EXPECT_FALSE(utf16(u"\xE9")->isEqual(utf16(u"e\x0301").get()));
}

TEST(String, HashesEqualTextsAlike) {
    EXPECT_EQ(str("key")->hash(), utf16(u"key")->hash());
    EXPECT_EQ(str("key")->hash(), NS::make<NS::MutableString>(*str("key"))->hash());
    EXPECT_EQ(str("key")->hash(), NS::String::hashOfAscii("key"));
    EXPECT_EQ(str("\xC3\xA9")->hash(), utf16(u"\xE9")->hash());
    EXPECT_NE(str("key")->hash(), str("kez")->hash());
}

struct Order {
    std::u16string_view a;
    std::u16string_view b;
    int sign;
};

constexpr Order kOrders[] = {
    {u"",             u"",       0 },
    {u"",             u"a",      -1},
    {u"a",            u"b",      -1},
    {u"a",            u"ab",     -1},
    {u"B",            u"a",      -1},
    {u"a",            u"\xE9",   -1},
    {u"\xE9",         u"\xE9",   0 },
    {u"\xE9x",        u"\xE9",   1 },
    {u"z",            u"\xFFFF", -1},
    {u"\xD83D\xDE00", u"\xFFFF", -1}, // by unit, not by code point
};

TEST(String, ComparesByCodeUnit) {
    for (const Order& each : kOrders) {
        const int order = utf16(each.a)->compare(*utf16(each.b));
        const int reverse = utf16(each.b)->compare(*utf16(each.a));
        EXPECT_EQ((order > 0) - (order < 0), each.sign);
        EXPECT_EQ((reverse > 0) - (reverse < 0), -each.sign);
    }
}

TEST(String, KnowsItsPrefixes) {
    EXPECT_TRUE(str("abc")->hasPrefix(*str("ab")));
    EXPECT_TRUE(str("abc")->hasPrefix(*str("abc")));
    EXPECT_TRUE(str("abc")->hasPrefix(*str("")));
    EXPECT_FALSE(str("abc")->hasPrefix(*str("abcd")));
    EXPECT_FALSE(str("abc")->hasPrefix(*str("b")));
    EXPECT_TRUE(str("ab\xC3\xA9")->hasPrefix(*str("ab")));
    EXPECT_FALSE(str("ab")->hasPrefix(*str("a\xC3\xA9")));
}

TEST(String, KnowsItsSuffixes) {
    EXPECT_TRUE(str("abc")->hasSuffix(*str("bc")));
    EXPECT_TRUE(str("abc")->hasSuffix(*str("")));
    EXPECT_FALSE(str("abc")->hasSuffix(*str("xabc")));
    EXPECT_TRUE(str("\xC3\xA9.log")->hasSuffix(*str(".log")));
    EXPECT_TRUE(str("x\xC3\xA9")->hasSuffix(*str("\xC3\xA9")));
    EXPECT_FALSE(str("log")->hasSuffix(*str("\xC3\xA9")));
}

struct Find {
    std::u16string_view text;
    std::u16string_view part;
    std::optional<std::size_t> position;
};

constexpr Find kFinds[] = {
    {u"abcabc",      u"abc",   0           },
    {u"abcabc",      u"ca",    2           },
    {u"aab",         u"ab",    1           },
    {u"abc",         u"d",     std::nullopt},
    {u"abc",         u"abcd",  std::nullopt},
    {u"abc",         u"",      std::nullopt},
    {u"",            u"",      std::nullopt},
    {u"x\xE9y\xE9z", u"\xE9z", 3           },
    {u"x\xE9yz",     u"yz",    2           },
    {u"x\xE9y",      u"yz",    std::nullopt},
    {u"abc",         u"\xE9",  std::nullopt},
};

TEST(String, FindsTheFirstOccurrenceOfAPart) {
    for (const Find& each : kFinds) {
        const auto text = utf16(each.text);
        EXPECT_EQ(text->rangeOfString(*utf16(each.part)), each.position) << text->utf8();
        EXPECT_EQ(text->containsString(*utf16(each.part)), each.position.has_value());
    }
}

TEST(String, GivesItsParts) {
    const auto text = str("ab\xC3\xA9"
                          "cd");
    EXPECT_EQ(text->substringFromIndex(2)->utf8(), "\xC3\xA9"
                                                   "cd");
    EXPECT_EQ(text->substringFromIndex(5)->utf8(), "");
    EXPECT_EQ(text->substringToIndex(3)->utf8(), "ab\xC3\xA9");
    EXPECT_EQ(text->substringToIndex(0)->utf8(), "");
    EXPECT_EQ(text->substringWithRange(1, 3)->utf8(), "b\xC3\xA9"
                                                      "c");
    EXPECT_EQ(text->substringWithRange(5, 0)->utf8(), "");
}

TEST(String, RaisesForAPartBeyondItsEnd) {
    const auto text = str("abc");
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(Tests::nameOfException([&] { (void)text->substringFromIndex(4); }),
              NS::kRangeException);
    EXPECT_EQ(Tests::nameOfException([&] { (void)text->substringToIndex(4); }),
              NS::kRangeException);
    EXPECT_EQ(Tests::nameOfException([&] { (void)text->substringWithRange(2, 2); }),
              NS::kRangeException);
    EXPECT_EQ(Tests::nameOfException([&] { (void)text->substringWithRange(2, kMost); }),
              NS::kRangeException);
    EXPECT_EQ(Tests::nameOfException([&] { (void)text->substringWithRange(kMost, 1); }),
              NS::kRangeException);
}

TEST(String, JoinsTextsOfEitherWidth) {
    EXPECT_EQ(str("a")->stringByAppendingString(*str("b"))->utf8(), "ab");
    EXPECT_EQ(str("a")->stringByAppendingString(*str("\xC3\xA9"))->utf8(), "a\xC3\xA9");
    EXPECT_EQ(str("\xC3\xA9")->stringByAppendingString(*str("a"))->utf8(), "\xC3\xA9"
                                                                           "a");
    EXPECT_EQ(str("")->stringByAppendingString(*str(""))->utf8(), "");
}

TEST(String, DescribesAndCopiesItselfAsItself) {
    const auto text = str("text");
    EXPECT_EQ(text->description(), text);
    EXPECT_EQ(text->copy(), text);
}

TEST(String, HasTwinsThatShareItsCharacters) {
    for (const char* const utf8 : {"ascii", "caf\xC3\xA9"}) {
        const auto text = NS::str(utf8);
        const auto twin = text->twin();
        const auto third = twin->twin();
        EXPECT_NE(third, twin);
        EXPECT_STREQ(third->objectClass().name, "NSString");
        EXPECT_TRUE(third->isEqual(text.get()));
        EXPECT_EQ(third->hash(), text->hash());
        EXPECT_EQ(third->ascii().data(), text->ascii().data());
        EXPECT_EQ(third->utf16().data(), text->utf16().data());
    }
}

TEST(String, ATwinIsItsOwnCopy) {
    const auto twin = NS::str("abc")->twin();
    EXPECT_EQ(twin->copy(), twin);
    const auto changing = twin->mutableCopy();
    changing->appendString(*twin);
    EXPECT_EQ(changing->utf8(), "abcabc");
    changing->setString(*twin);
    EXPECT_EQ(changing->utf8(), "abc");
    EXPECT_EQ(twin->utf8(), "abc");
}

TEST(MutableString, HasTwinsThatNeverChange) {
    const auto text = NS::make<NS::MutableString>(*NS::str("abc"));
    const auto twin = text->twin();
    text->setString(*NS::str("d"));
    EXPECT_EQ(twin->utf8(), "abc");
    EXPECT_STREQ(twin->objectClass().name, "NSString");
}

TEST(MutableString, ReplacesItsText) {
    const auto text = NS::make<NS::MutableString>(*str("old"));
    text->setString(*str("n\xC3\xA9w"));
    EXPECT_EQ(text->utf8(), "n\xC3\xA9w");
    EXPECT_EQ(text->length(), 3U);
    EXPECT_FALSE(text->isAscii());
    EXPECT_TRUE(text->isEqual(str("n\xC3\xA9w").get()));
    EXPECT_TRUE(str("n\xC3\xA9w")->isEqual(text.get()));
}

TEST(MutableString, AppendsAlsoItself) {
    const auto text = NS::make<NS::MutableString>(*str("ab"));
    text->appendString(*str("c"));
    text->appendString(*text);
    EXPECT_EQ(text->utf8(), "abcabc");
    text->setString(*text);
    EXPECT_EQ(text->utf8(), "abcabc");
}

TEST(MutableString, LeavesItsCopiesAlone) {
    const auto text = NS::make<NS::MutableString>(*str("before"));
    const auto copy = text->copy();
    const auto description = text->description();
    const auto second = text->mutableCopy();
    text->setString(*str("after"));
    EXPECT_EQ(copy->utf8(), "before");
    EXPECT_EQ(description->utf8(), "before");
    EXPECT_EQ(second->utf8(), "before");
}

TEST(MutableString, CopiesIntoATextThatNeverChanges) {
    const auto text = NS::make<NS::MutableString>(*str("a"));
    EXPECT_EQ(&text->objectClass(), &NS::MutableString::kClass);
    EXPECT_TRUE(text->isKindOfClass(NS::String::kClass));
    EXPECT_EQ(&text->copy()->objectClass(), &NS::String::kClass);
}

struct LowerCase {
    std::u16string_view text;
    std::u16string_view lower;
};

constexpr LowerCase kLowerCases[] = {
    {u"",                   u""                  },
    {u"MiXed 123 [\\]",     u"mixed 123 [\\]"    },
    {u"\xC9T\xC9",          u"\xE9t\xE9"         },
    {u"\x0130",             u"i\x0307"           }, // one unit becomes two
    {u"\x03A3\x0391\x03A3", u"\x03C3\x03B1\x03C2"}, // a sigma at the end of a word
    {u"\xD801\xDC00",       u"\xD801\xDC28"      }, // outside of the first plane
    {u"A\xD800Z",           u"a\xD800z"          }, // a lone surrogate stays
    {u"A\xDC80",            u"a\xDC80"           },
};

TEST(LowercaseString, FollowsUnicodeInNoLanguage) {
    for (const LowerCase& each : kLowerCases) {
        EXPECT_TRUE(utf16(each.text)->lowercaseString()->isEqual(utf16(each.lower).get()))
            << utf16(each.text)->utf8();
    }
}

TEST(LowercaseEquals, IsWhatTheLowerCaseWouldSay) {
    for (const LowerCase& each : kLowerCases) {
        EXPECT_TRUE(utf16(each.text)->lowercaseEquals(*utf16(each.lower)))
            << utf16(each.text)->utf8();
        for (const LowerCase& other : kLowerCases) {
            EXPECT_EQ(utf16(each.text)->lowercaseEquals(*utf16(other.lower)),
                      each.lower == other.lower);
        }
    }
}

TEST(LowercaseEquals, ReadsBothTextsToTheirEnds) {
    EXPECT_FALSE(str("Docs")->lowercaseEquals(*str("doc")));
    EXPECT_FALSE(str("Doc")->lowercaseEquals(*str("docs")));
    EXPECT_FALSE(utf16(u"\xC9t")->lowercaseEquals(*utf16(u"\xE9")));
    EXPECT_FALSE(utf16(u"\xC9")->lowercaseEquals(*utf16(u"\xE9t")));
    EXPECT_FALSE(str("E")->lowercaseEquals(*utf16(u"\xE9")));
    EXPECT_TRUE(utf16(u"\x212A")->lowercaseEquals(*str("k"))); // the sign for kelvin
    EXPECT_FALSE(str("Docs")->lowercaseEquals(*str("Docs")));
}

// A character in front keeps the text from being held as ASCII, one behind shows where it ends.
TEST(LowercaseEquals, HoldsForEveryCharacter) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        std::u16string units = u"\xE9";
        if (character < 0x10000) {
            units += static_cast<char16_t>(character);
        } else {
            units += static_cast<char16_t>(0xD7C0 + (character >> 10U));
            units += static_cast<char16_t>(0xDC00 + (character & 0x3FFU));
        }
        units += u'z';
        const auto text = utf16(units);
        ASSERT_TRUE(text->lowercaseEquals(*text->lowercaseString()))
            << std::hex << std::uint32_t{character};
    }
}

struct Decomposition {
    std::u16string_view text;
    std::u16string_view decomposed;
};

constexpr Decomposition kDecompositions[] = {
    {u"",              u""                        },
    {u"plain",         u"plain"                   },
    {u"\xE9",          u"e\x0301"                 },
    {u"e\x0301",       u"e\x0301"                 },
    {u"\x1E69",        u"s\x0323\x0307"           }, // two marks
    {u"s\x0307\x0323", u"s\x0323\x0307"           }, // in their canonical order
    {u"\xD55C",        u"\x1112\x1161\x11AB"      }, // a Hangul syllable
    {u"\xFB01",        u"\xFB01"                  }, // a ligature is compatible, not canonical
    {u"\x212B",        u"A\x030A"                 }, // a singleton
    {u"\xD834\xDD5E",  u"\xD834\xDD57\xD834\xDD65"},
    {u"\xE9\xDCE9",    u"e\x0301\xDCE9"           }, // a byte of a file name stays
};

TEST(DecomposedString, IsCanonicalDecomposition) {
    for (const Decomposition& each : kDecompositions) {
        const auto decomposed = utf16(each.text)->decomposedStringWithCanonicalMapping();
        EXPECT_TRUE(decomposed->isEqual(utf16(each.decomposed).get())) << utf16(each.text)->utf8();
    }
}

TEST(DecomposedString, IsANewObjectAlsoWhereNothingChanges) {
    const auto text = str("plain");
    EXPECT_NE(text->decomposedStringWithCanonicalMapping(), text);
    EXPECT_NE(text->lowercaseString(), text);
}

} // namespace
