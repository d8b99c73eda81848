#include "Platform/Foundation/Description.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using NS::Array;
using NS::Dictionary;
using NS::str;

NS::Ref<Array> array(std::initializer_list<NS::Ref<NS::Object>> objects) {
    return Array::arrayWithObjects(objects);
}

NS::Ref<NS::Set> set(const std::vector<NS::Ref<NS::Object>>& objects) {
    return NS::make<NS::Set>(objects);
}

std::string text(const NS::Ref<NS::Object>& object) {
    return object->description()->utf8();
}

TEST(Description, OfNilIsInBrackets) {
    EXPECT_EQ(NS::descriptionOf(nullptr)->utf8(), "(null)");
    EXPECT_EQ(NS::descriptionOf(str("x").get())->utf8(), "x");
}

TEST(Description, OfEmptyCollectionsHasTwoLines) {
    EXPECT_EQ(text(NS::make<Array>()), "(\n)");
    EXPECT_EQ(text(NS::make<Dictionary>()), "{\n}");
    EXPECT_EQ(text(NS::make<NS::Set>()), "{(\n)}");
}

TEST(Description, OfAnArrayHasALineForEachElement) {
    EXPECT_EQ(text(array({str("a")})), "(\n"
                                       "    a\n"
                                       ")");
    EXPECT_EQ(text(array({str("a"), str("b c")})), "(\n"
                                                   "    a,\n"
                                                   "    \"b c\"\n"
                                                   ")");
}

TEST(Description, OfASetHasTwoBrackets) {
    EXPECT_EQ(text(set({str("a"), str("b")})), "{(\n"
                                               "    a,\n"
                                               "    b\n"
                                               ")}");
}

TEST(Description, OfADictionaryHasALineForEachKeyInOrder) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"b", str("two")                  },
        {"a", NS::Number::numberWithInt(1)},
        {"B", str("")                     }
    });
    EXPECT_EQ(text(dictionary), "{\n"
                                "    B = \"\";\n"
                                "    a = 1;\n"
                                "    b = two;\n"
                                "}");
}

TEST(Description, OfADictionaryWithOtherKeysKeepsTheirOrder) {
    const auto dictionary = NS::make<NS::MutableDictionary>();
    dictionary->setObject_forKey(str("x"), NS::Number::numberWithInt(2));
    dictionary->setObject_forKey(str("y"), NS::Number::numberWithInt(1));
    EXPECT_EQ(text(dictionary), "{\n"
                                "    2 = x;\n"
                                "    1 = y;\n"
                                "}");
}

TEST(Description, IndentsNestedArraysBeforeTheirBracketToo) {
    EXPECT_EQ(text(array({array({str("a"), str("b")}), array({})})), "(\n"
                                                                     "        (\n"
                                                                     "        a,\n"
                                                                     "        b\n"
                                                                     "    ),\n"
                                                                     "        (\n"
                                                                     "    )\n"
                                                                     ")");
}

TEST(Description, IndentsCollectionsWithinADictionary) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"list", array({str("a")})                                   },
        {"map",  Dictionary::dictionaryWithEntries({{"k", str("v")}})},
        {"set",  set({str("a")})                                     }
    });
    EXPECT_EQ(text(dictionary), "{\n"
                                "    list =     (\n"
                                "        a\n"
                                "    );\n"
                                "    map =     {\n"
                                "        k = v;\n"
                                "    };\n"
                                "    set =     {(\n"
                                "        a\n"
                                "    )};\n"
                                "}");
}

TEST(Description, IndentsThreeLevels) {
    const auto inner = Dictionary::dictionaryWithEntries({
        {"list", array({str("a")})}
    });
    EXPECT_EQ(text(array({inner})), "(\n"
                                    "        {\n"
                                    "        list =         (\n"
                                    "            a\n"
                                    "        );\n"
                                    "    }\n"
                                    ")");
}

struct Quoted {
    std::u16string_view text;
    std::string_view quoted;
};

constexpr Quoted kQuoted[] = {
    {u"abcXYZ019",      "abcXYZ019"                },
    {u"",               "\"\""                     },
    {u"a b",            "\"a b\""                  },
    {u"a_b",            "\"a_b\""                  },
    {u"a.b",            "\"a.b\""                  },
    {u"-1",             "\"-1\""                   },
    {u"/usr/bin",       "\"/usr/bin\""             },
    {u"say \"hi\"",     "\"say \\\"hi\\\"\""       },
    {u"back\\slash",    "\"back\\\\slash\""        },
    {u"\a\b\f\n\r\t\v", "\"\\a\\b\\f\\n\\r\\t\\v\""},
    {u"\x01\x1F\x7F",   "\"\\001\\037\\177\""      },
    {u"\xE9",           "\"\\U00e9\""              },
    {u"\xD83D\xDE00",   "\"\\Ud83d\\Ude00\""       },
    {u"\xDCFF",         "\"\\Udcff\""              },
    {u"it's",           "\"it's\""                 },
};

TEST(Description, QuotesAllTextButAsciiLettersAndDigits) {
    for (const Quoted& each : kQuoted) {
        EXPECT_EQ(NS::quotedForDescription(*NS::String::fromUtf16(each.text))->utf8(), each.quoted);
    }
}

TEST(Description, QuotesTheDescriptionsOfOtherElements) {
    const auto object = NS::make<NS::Object>();
    const auto elements = array({NS::Null::null(), NS::Number::numberWithDouble(-1.5),
                                 NS::Number::numberWithInt(7), NS::make<NS::Date>(0.0), object});
    EXPECT_EQ(text(elements), "(\n"
                              "    \"<null>\",\n"
                              "    \"-1.5\",\n"
                              "    7,\n"
                              "    \"2001-01-01 00:00:00 +0000\",\n"
                              "    \"" +
                                  object->description()->utf8() +
                                  "\"\n"
                                  ")");
}

TEST(Description, ShowsDataInItsOwnBrackets) {
    const auto data = NS::Data::dataWithBytes(NS::bytesOf("hi"));
    EXPECT_EQ(text(array({data, str("{length = 2, bytes = 0x6869}")})),
              "(\n"
              "    {length = 2, bytes = 0x6869},\n"
              "    \"{length = 2, bytes = 0x6869}\"\n"
              ")");
}

TEST(Description, QuotesKeysAsItQuotesValues) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"a key", str("x")}
    });
    EXPECT_EQ(text(dictionary), "{\n"
                                "    \"a key\" = x;\n"
                                "}");
}

TEST(Description, OfAUserInfoStandsOnOneLine) {
    const auto userInfo = Dictionary::dictionaryWithEntries({
        {"b", str("two words")            },
        {"a", NS::Number::numberWithInt(1)}
    });
    EXPECT_EQ(NS::describeUserInfo(*userInfo)->utf8(), " UserInfo={b=two words, a=1}");
    EXPECT_EQ(NS::describeUserInfo(*NS::make<Dictionary>())->utf8(), " UserInfo={}");
}

TEST(Description, OfACollectionThatHoldsItselfEnds) {
    const auto loop = NS::make<NS::MutableArray>();
    loop->addObject(loop);
    const std::string description = text(loop);
    loop->removeAllObjects();
    EXPECT_NE(description.find("..."), std::string::npos);
    EXPECT_LT(description.size(), 100000U);
}

TEST(Description, OfADictionaryThatHoldsItselfEnds) {
    const auto loop = NS::make<NS::MutableDictionary>();
    loop->setObject_forKey(NS::Array::arrayWithObjects({loop}), "self");
    const std::string description = text(loop);
    loop->removeAllObjects();
    EXPECT_NE(description.find("..."), std::string::npos);
    EXPECT_LT(description.size(), 100000U);
}

// 2 to the 60th leaves in 61 objects.
TEST(Description, OfACollectionThatUnfoldsWithoutEndBreaksOff) {
    NS::Ref<NS::Object> all = str("leaf");
    for (int level = 0; level < 60; ++level) {
        all = array({all, all});
    }
    const std::string description = text(all);
    EXPECT_NE(description.find("..."), std::string::npos);
    EXPECT_LT(description.size(), std::size_t{2} << 20U);
}

TEST(Description, OfAVeryLongCollectionBreaksOff) {
    const auto many = NS::make<NS::MutableArray>();
    for (int i = 0; i < 200000; ++i) {
        many->addObject(str("element"));
    }
    const std::string description = text(many);
    EXPECT_LT(description.size(), std::size_t{2} << 20U);
    EXPECT_TRUE(description.ends_with("...\n)")) << description.substr(description.size() - 40);
}

// Quoting doubles the backslashes of the description within, at each of the levels.
TEST(Description, OfErrorsWithinErrorsStaysShort) {
    NS::Ref<NS::Object> inner = str(std::string(1000, '\\'));
    for (int level = 0; level < 100; ++level) {
        inner = NS::make<NS::Error>(str("Domain"), level,
                                    Dictionary::dictionaryWithEntries({
                                        {"causes", array({inner, inner})}
        }));
    }
    EXPECT_LT(text(inner).size(), std::size_t{16} << 20U);
}

TEST(Description, OfAVeryLongElementBreaksOff) {
    const std::string description = text(array({str(std::string(std::size_t{3} << 20U, 'x'))}));
    EXPECT_LT(description.size(), std::size_t{2} << 20U);
    EXPECT_NE(description.find("..."), std::string::npos);
}

} // namespace
