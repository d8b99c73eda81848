#include "Platform/Foundation/PropertyList.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/HandWrittenList.h"

#include <gtest/gtest.h>

namespace {

class PropertyList : public testing::Test {
  protected:
    NS::RefPtr<NS::Object> roundTrip(const NS::Object& object) {
        const auto data = NS::dataWithPropertyList(object, reason);
        return data ? NS::propertyListWithData(*data, reason) : nullptr;
    }
    // Why the list that these bytes are is refused.
    std::string refusal(const Tests::HandWrittenList& list) {
        reason = nullptr;
        EXPECT_FALSE(NS::propertyListWithData(*list.data(), reason));
        return reason ? reason->utf8() : "none";
    }

    NS::RefPtr<NS::String> reason;
};

TEST_F(PropertyList, GivesBackEqualPlainValues) {
    const auto value = NS::Dictionary::dictionaryWithEntries({
        {"text",  NS::str("caf\xC3\xA9")                                   },
        {"yes",   NS::Number::numberWithBool(true)                         },
        {"int",   NS::Number::numberWithLongLong(-1)                       },
        {"real",  NS::Number::numberWithDouble(0.1)                        },
        {"date",  NS::make<NS::Date>(3.5)                                  },
        {"data",  NS::Data::dataWithBytes(NS::bytesOf("bytes"))            },
        {"array", NS::Array::arrayWithObjects({NS::str("a"), NS::str("b")})},
        {"none",  NS::make<NS::Dictionary>()                               },
    });
    const auto back = roundTrip(*value);
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->isEqual(value.get()));
    EXPECT_EQ(back->description()->utf8(), value->description()->utf8());
}

TEST_F(PropertyList, IsReadFromXML) {
    const auto xml = NS::bytesOf("<plist><dict><key>a</key><array><integer>1</integer>"
                                 "<date>2001-01-01T00:00:02Z</date></array></dict></plist>");
    const auto value = NS::propertyListWithData(*NS::Data::dataWithBytes(xml), reason);
    ASSERT_TRUE(value);
    EXPECT_TRUE(
        value->isEqual(NS::Dictionary::dictionaryWithEntries(
                           {
                               {"a", NS::Array::arrayWithObjects(
                                         {NS::Number::numberWithInt(1), NS::make<NS::Date>(2)})}
    })
                           .get()));
}

TEST_F(PropertyList, SaysWhatIsWrongWithXML) {
    const auto xml = NS::bytesOf("<plist>\n<dict></plist>");
    EXPECT_FALSE(NS::propertyListWithData(*NS::Data::dataWithBytes(xml), reason));
    EXPECT_EQ(reason->utf8(), "mismatched tag on line 2");
}

TEST_F(PropertyList, SaysWhichObjectItDoesNotHold) {
    EXPECT_FALSE(roundTrip(*NS::Array::arrayWithObjects({NS::Null::null()})));
    EXPECT_EQ(reason->utf8(), "an object of class NSNull");
}

TEST_F(PropertyList, HoldsOnlyTextsAsKeys) {
    const auto dictionary = NS::make<NS::MutableDictionary>();
    dictionary->setObject_forKey(NS::str("v"), NS::Number::numberWithInt(1));
    EXPECT_FALSE(roundTrip(*dictionary));
    EXPECT_EQ(reason->utf8(), "a key that is no text");
    Tests::HandWrittenList list;
    list.add("\xD1\x01\x01");
    list.add("\x09");
    EXPECT_EQ(refusal(list), "a key that is no text");
}

TEST_F(PropertyList, EndsForACollectionThatHoldsItself) {
    const auto array = NS::make<NS::MutableArray>();
    array->addObject(array);
    EXPECT_FALSE(roundTrip(*array));
    EXPECT_EQ(reason->utf8(), "collections stand too deep within one another");
    array->removeAllObjects();
    Tests::HandWrittenList list;
    list.add(std::string("\xA1\x00", 2));
    EXPECT_NE(refusal(list), "none");
}

TEST_F(PropertyList, SaysWhatIsDamaged) {
    Tests::HandWrittenList list;
    list.add("\xA1\x05");
    EXPECT_EQ(refusal(list), "a reference to an object that is not there");
    list = Tests::HandWrittenList();
    list.add("\x51\xE9");
    EXPECT_EQ(refusal(list), "a text that says it is ASCII and is not");
    list = Tests::HandWrittenList();
    list.add("\x80\x01");
    EXPECT_EQ(refusal(list), "an object where a plain value should be");
    EXPECT_FALSE(NS::propertyListWithData(*NS::Data::dataWithBytes({}), reason));
    EXPECT_EQ(reason->utf8(), "it does not begin with bplist00");
}

// Each level holds the one below twice; the list is 150 bytes long.
TEST_F(PropertyList, RefusesCollectionsThatUnfoldWithoutEnd) {
    Tests::HandWrittenList list;
    list.add(std::string("\xA0", 1));
    for (std::uint64_t level = 1; level < 40; ++level) {
        list.add("\xA2" + list.reference(level - 1) + list.reference(level - 1));
    }
    list.top = 39;
    EXPECT_EQ(refusal(list), "collections that overlap");
}

} // namespace
