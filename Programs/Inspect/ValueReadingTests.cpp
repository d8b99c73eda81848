#include "Programs/Inspect/ValueReading.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Programs/Inspect/ArchiveJson.h"
#include "Programs/Inspect/InspectionError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>

namespace {

using Inspection::Forms;
using NS::as;

class ValueReading : public testing::Test {
  protected:
    static NS::RefPtr<NS::Object> value(std::string_view json, Forms forms = Forms::kValues) {
        return Inspection::valueFromJson(json, forms);
    }
    static NS::Ref<NS::Data> archived(const NS::RefPtr<NS::Object>& root) {
        return NS::KeyedArchiver::archivedDataWithRootObject(root);
    }
    // A value at the bottom of many levels.
    static std::string nested(int levels, std::string_view begin, std::string_view bottom,
                              std::string_view end) {
        std::string json;
        for (int i = 0; i < levels; ++i) {
            json += begin;
        }
        json += bottom;
        for (int i = 0; i < levels; ++i) {
            json += end;
        }
        return json;
    }
    static std::string mistake(std::string_view json) {
        try {
            (void)value(json);
        } catch (const Inspection::Error& error) {
            return error.what();
        }
        return "none";
    }
};

TEST_F(ValueReading, GivesThePlatformsObjects) {
    EXPECT_TRUE(as<NS::Null>(value("null")));
    EXPECT_TRUE(value(R"("caf\u00e9")")->isEqual(NS::str("caf\xC3\xA9").get()));
    EXPECT_TRUE(value(" [] ")->isEqual(NS::make<NS::Array>().get()));
    EXPECT_TRUE(
        value(R"({"a":[1]})")
            ->isEqual(NS::Dictionary::dictionaryWithEntries(
                          {
                              {"a", NS::Array::arrayWithObjects({NS::Number::numberWithInt(1)})}
    })
                          .get()));
}

TEST_F(ValueReading, KeepsTheTypeOfANumber) {
    using Type = NS::Number::Type;
    constexpr std::pair<std::string_view, Type> kRows[] = {
        {"true",                 Type::kBoolean },
        {"0",                    Type::kInteger },
        {"9223372036854775807",  Type::kInteger },
        {"-9223372036854775808", Type::kInteger },
        {"9223372036854775808",  Type::kUnsigned},
        {"18446744073709551615", Type::kUnsigned},
        {"1.0",                  Type::kDouble  },
        {"1e2",                  Type::kDouble  },
    };
    for (const auto& [json, type] : kRows) {
        EXPECT_EQ(as<NS::Number>(value(json))->type(), type) << json;
    }
}

TEST_F(ValueReading, UnderstandsTheFormsOfValues) {
    EXPECT_EQ(NS::charactersOf(as<NS::Data>(value(R"({"$data":"AGE="})"))->bytes()),
              std::string_view("\0a", 2));
    EXPECT_EQ(as<NS::Date>(value(R"({"$date":"2001-01-01T00:00:01.5Z"})"))
                  ->timeIntervalSinceReferenceDate(),
              1.5);
    EXPECT_EQ(as<NS::Date>(value(R"({"$date":-2})"))->timeIntervalSinceReferenceDate(), -2);
    EXPECT_EQ(as<NS::String>(value(R"({"$bytes":"a%FF"})"))->fileSystemRepresentation(), "a\xFF");
    EXPECT_TRUE(as<NS::String>(value(R"({"$utf16":"d8000061"})"))
                    ->isEqualToString(*NS::String::fromUtf16(u"\xD800\x61")));
    EXPECT_TRUE(std::isnan(as<NS::Number>(value(R"({"$real":"nan"})"))->doubleValue()));
    EXPECT_FALSE(value(R"({"$nil":true})"));
    EXPECT_EQ(as<NS::Set>(value(R"({"$set":[1,2]})"))->count(), 2U);
    const auto one = NS::Number::numberWithInt(1);
    EXPECT_TRUE(as<NS::Null>(
        as<NS::Dictionary>(value(R"({"$dictionary":[[1,null]]})"))->objectForKey(*one)));
}

TEST_F(ValueReading, TakesTheSecondDollarOffAKey) {
    EXPECT_TRUE(as<NS::Dictionary>(value(R"({"$$a":1})"))->objectForKey("$a"));
    EXPECT_TRUE(as<NS::Dictionary>(value(R"({"a":1,"$$$":1})"))->objectForKey("$$"));
}

TEST_F(ValueReading, FindsCollectionsByTheirNumbers) {
    const auto root = as<NS::Array>(value(R"([{"$data":""},{"a":[]},{},{"$ref":3},{"$ref":4}])"));
    const auto inner = as<NS::Dictionary>(NS::RefPtr<NS::Object>(root->objectAtIndex(1)));
    EXPECT_EQ(root->objectAtIndex(3), inner->objectForKey("a"));
    EXPECT_EQ(root->objectAtIndex(4), root->objectAtIndex(2));
}

TEST_F(ValueReading, TakesFormsForWhatTheySayInSomebodyElsesJson) {
    const auto reply = as<NS::Dictionary>(value(R"({"$data":"x","$$":1})", Forms::kNone));
    ASSERT_TRUE(reply);
    EXPECT_TRUE(reply->objectForKey("$data"));
    EXPECT_TRUE(reply->objectForKey("$$"));
}

TEST_F(ValueReading, TakesNumbersOfAnySizeInSomebodyElsesJson) {
    const auto reply = as<NS::Array>(
        value("[1,18446744073709551616,-9223372036854775809,1e400,2,-1e400,3e5]", Forms::kNone));
    ASSERT_TRUE(reply);
    std::string numbers;
    for (const auto& each : *reply) {
        EXPECT_EQ(as<NS::Number>(each)->type() == NS::Number::Type::kInteger,
                  numbers.empty() || each->description()->utf8() == "2");
        numbers += each->description()->utf8() + ' ';
    }
    EXPECT_EQ(numbers, "1 1.844674407370955e+19 -9.223372036854776e+18 inf 2 -inf 300000 ");
}

TEST_F(ValueReading, SaysWhatIsWrongAndWhere) {
    constexpr std::pair<std::string_view, std::string_view> kRows[] = {
        {R"({"a":{"b":1,"b":2}})",                "the key b stands twice, at /a"                                  },
        {"[0,18446744073709551616]",
         "the integer 18446744073709551616 takes more than 64 bits, at /1"                                         },
        {"[-9223372036854775809]",
         "the integer -9223372036854775809 takes more than 64 bits, at /0"                                         },
        {R"({"$class":"NSURL"})",
         "a record, which stands in archives only and is not encoded, at /$class"                                  },
        {R"({"a":1,"$data":""})",                 "\"$data\" stands together with other keys, at /$data"           },
        {R"({"$data":"","a":1})",                 R"("$data" stands together with "a", at /$data)"                 },
        {R"({"$data":"!"})",                      "\"$data\" takes bytes in base 64, at the root"                  },
        {R"([{"$data":1}])",                      "\"$data\" takes bytes in base 64, at /0"                        },
        {R"({"$bytes":"%x"})",                    "\"$bytes\" takes a text with percent-encoded bytes, at the root"},
        {R"({"$utf16":"d80"})",
         "\"$utf16\" takes UTF-16 code units of four hexadecimal digits each, at the root"                         },
        {R"({"$real":"1"})",                      R"("$real" takes "inf", "-inf" or "nan", at the root)"           },
        {R"([{"$nil":true}])",                    "nil within a collection, at /0"                                 },
        {R"({"$nil":1})",                         "\"$nil\" takes true, at the root"                               },
        {R"({"$set":{"$set":[]}})",               "\"$set\" takes an array, at the root"                           },
        {R"({"$dictionary":{}})",                 "\"$dictionary\" takes an array, at the root"                    },
        {R"({"b":1,"b":2})",                      "the key b stands twice, at the root"                            },
        {R"({"$ref":1.5})",
         "\"$ref\" takes the number of a collection that stands before it, at the root"                            },
        {R"({"$dictionary":[[1]]})",
         "\"$dictionary\" takes pairs of a key and a value, at /$dictionary/0"                                     },
        {R"({"$dictionary":[[1,1],[1,1]]})",      "the key 1 stands twice, at /$dictionary"                        },
        {R"([{"$ref":1}])",                       "a collection that holds itself, which is not encoded, at /0"    },
        {R"([{"$ref":2}])",
         "\"$ref\" takes the number of a collection that stands before it, at /0"                                  },
        {R"([{"$ref":-1}])",
         "\"$ref\" takes the number of a collection that stands before it, at /0"                                  },
        {R"([[],{"$ref":2.5}])",
         "\"$ref\" takes the number of a collection that stands before it, at /1"                                  },
        {R"([[],{"a":{"$ref":true}}])",
         "\"$ref\" takes the number of a collection that stands before it, at /1/a"                                },
        {R"([[],{"$ref":18446744073709551615}])",
         "\"$ref\" takes the number of a collection that stands before it, at /1"                                  },
    };
    for (const auto& [json, expected] : kRows) {
        EXPECT_EQ(mistake(json), expected) << json;
    }
    EXPECT_TRUE(mistake(R"({"$what":1})").starts_with("there is no form \"$what\""));
}

TEST_F(ValueReading, RefusesWhatIsNoJson) {
    for (const std::string_view json :
         {"", "{", "[1,]", "1 2", "nan", "\"\xFF\"", R"("\ud800")", "[1e999]", "'a'"}) {
        EXPECT_TRUE(mistake(json).starts_with("parse error") || mistake(json).starts_with("number"))
            << json << ": " << mistake(json);
    }
}

// One by value is one, whatever its type.
TEST_F(ValueReading, RefusesASetThatWouldLoseAMember) {
    constexpr std::pair<std::string_view, std::string_view> kRows[] = {
        {R"({"$set":[1,1]})",                    "the member 1 stands twice, at /$set"         },
        {R"({"a":{"$set":["x",1,1.0]}})",        "the member 1 stands twice, at /a/$set"       },
        {R"({"$set":[true,2,1]})",               "the member 1 stands twice, at /$set"         },
        {R"([{"$set":["a\n","a\n"]}])",          R"(the member a\x0a stands twice, at /0/$set)"},
        {R"({"$set":[[1],[1]]})",                "the member stands twice, at /$set"           },
        {R"({"$set":[[1],{"$ref":2}]})",         "the member stands twice, at /$set"           },
        {R"({"$dictionary":[[[1],1],[[1],2]]})", "the key stands twice, at /$dictionary"       },
    };
    for (const auto& [json, expected] : kRows) {
        EXPECT_EQ(mistake(json), expected) << json;
    }
}

TEST_F(ValueReading, StopsWhereValuesStandTooDeep) {
    const std::pair<std::string_view, std::string_view> levels[] = {
        {"[",                      "]"  },
        {R"({"a":)",               "}"  },
        {R"({"$set":[)",           "]}" },
        {R"({"$dictionary":[[1,)", "]]}"}
    };
    for (const auto& [begin, end] : levels) {
        EXPECT_NO_THROW((void)archived(value(nested(512, begin, "1", end)))) << begin;
        EXPECT_EQ(mistake(nested(512, begin, R"({"$data":""})", end)), "none") << begin;
        const std::string tooDeep = mistake(nested(512, begin, "null", end));
        EXPECT_TRUE(tooDeep.starts_with("values stand too deep within one another, at \u2026"))
            << tooDeep;
        for (const int count : {513, 100'000}) {
            EXPECT_TRUE(mistake(nested(count, begin, "", "")).starts_with("values stand too deep"));
        }
    }
}

// Each level holds the one before by its number, so that nothing in the text stands deep.
TEST_F(ValueReading, StopsWhereValuesStandTooDeepByTheirNumbers) {
    const auto levels = [](int count) {
        std::string json = "[[]";
        for (int i = 2; i <= count; ++i) {
            json += R"(,[{"$ref":)" + std::to_string(i) + "}]";
        }
        return json + ']';
    };
    EXPECT_EQ(mistake(levels(511)), "none");
    EXPECT_EQ(mistake(levels(512)), "values stand too deep within one another, at /511/0");
    EXPECT_NO_THROW(
        (void)NS::KeyedUnarchiver::unarchiveObjectWithData(*archived(value(levels(511)))));
}

// What printArchive() shows of plain values, encoded again, is the same archive.
TEST_F(ValueReading, ReadsBackWhatIsShownOfAnArchive) {
    const auto json =
        R"({"a":[1,-2,0.5,true,null,"x",[],{}],"$$b":{"$data":"AA=="},"s":{"$set":[[2]]},
        "d":{"$date":"2026-11-16T06:56:27.25Z"},"m":{"$dictionary":[[[1],2]]},
        "r":{"$ref":2},"e":{"$ref":4},"t":[{"$bytes":"%FF"},{"$utf16":"d800"},{"$real":"inf"}]})";
    const auto first = NS::KeyedArchiver::archivedDataWithRootObject(value(json));
    std::ostringstream shown;
    Inspection::printArchive(first->bytes(), shown);
    const auto second = NS::KeyedArchiver::archivedDataWithRootObject(value(shown.str()));
    EXPECT_TRUE(second->isEqual(first.get())) << shown.str();
}

std::string manyOf(int count, const std::function<std::string(int)>& each) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += (i == 0 ? "" : ",") + each(i);
    }
    return text;
}

TEST_F(ValueReading, TellsManyCollectionsApart) {
    const auto set = as<NS::Set>(
        value("{\"$set\":[" + manyOf(50'000, [](int i) { return '[' + std::to_string(i) + ']'; }) +
              "]}"));
    EXPECT_EQ(set->count(), 50'000U);
    const auto dictionary = as<NS::Dictionary>(
        value("{\"$dictionary\":[" +
              manyOf(50'000, [](int i) { return "[[" + std::to_string(i) + "],0]"; }) + "]}"));
    EXPECT_EQ(dictionary->count(), 50'000U);
}

// They differ further down than a hash looks.
TEST_F(ValueReading, RefusesCollectionsThatAreTooMuchWorkToTellApart) {
    const auto nested = [](int i) {
        return std::string(30, '[') + std::to_string(i) + std::string(30, ']');
    };
    const std::string reason =
        "telling the keys of a dictionary or the members of a set apart takes too much work";
    EXPECT_EQ(mistake("{\"$set\":[" + manyOf(3000, nested) + "]}"), reason + ", at /$set");
    EXPECT_EQ(mistake("{\"$dictionary\":[" +
                      manyOf(3000, [&](int i) { return '[' + nested(i) + ",0]"; }) + "]}"),
              reason + ", at /$dictionary");
}

} // namespace
