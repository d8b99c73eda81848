#include "Programs/QuorvaneHost/PayloadJson.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

std::string json(const NS::RefPtr<NS::Object>& object) {
    return jsonFromPayload(object).dump();
}

TEST(PayloadJson, ShowsNilAndTheNullObjectAsNull) {
    EXPECT_EQ(json(nullptr), "null");
    EXPECT_EQ(json(NS::Null::null()), "null");
}

TEST(PayloadJson, ShowsPlainValuesAsTheirCounterparts) {
    const auto values = NS::Array::arrayWithObjects(
        {NS::str("/Docs/\u00e9"), NS::Number::numberWithBool(true), NS::Number::numberWithInt(-7),
         NS::Number::numberWithDouble(0.5),
         NS::Number::numberWithUnsignedLongLong(std::numeric_limits<std::uint64_t>::max())});
    EXPECT_EQ(json(values), "[\"/Docs/\u00e9\",true,-7,0.5,18446744073709551615]");
}

TEST(PayloadJson, ShowsADictionaryInItsOrder) {
    const auto dictionary = NS::Dictionary::dictionaryWithEntries({
        {"b", NS::str("1")         },
        {"a", NS::make<NS::Array>()}
    });
    EXPECT_EQ(json(dictionary), R"({"b":"1","a":[]})");
}

TEST(PayloadJson, ShowsTheBytesOfANameThatIsNotUnicode) {
    EXPECT_EQ(json(NS::String::fromFileSystemRepresentation("/a b\xFF%")),
              R"({"$bytes":"/a%20b%FF%25"})");
}

TEST(PayloadJson, NamesTheClassOfAnythingElse) {
    EXPECT_EQ(json(NS::Data::dataWithBytes(NS::bytesOf("x"))),
              R"({"$class":"NSData","description":"{length = 1, bytes = 0x78}"})");
}

TEST(PayloadJson, ShowsANumberThatJsonDoesNotHaveAsText) {
    EXPECT_EQ(json(NS::Number::numberWithDouble(std::numeric_limits<double>::infinity())),
              R"("inf")");
}

TEST(PayloadJson, BreaksOffInAnArrayThatHoldsItself) {
    const auto array = NS::make<NS::MutableArray>();
    array->addObject(array);
    const std::string text = json(array);
    array->removeAllObjects();
    EXPECT_LT(text.size(), 1000U);
    EXPECT_NE(text.find("\u2026"), std::string::npos);
}

TEST(PayloadJson, BreaksOffInATextThatIsRepeatedWithoutEnd) {
    const NS::Ref<NS::Object> text = NS::str(std::string(1 << 20, 'x'));
    const auto array = NS::make<NS::Array>(std::vector<NS::Ref<NS::Object>>(10'000, text));
    EXPECT_LT(json(array).size(), std::size_t{80} << 20U);
}

TEST(PayloadJson, BreaksOffInAnArrayThatUnfoldsWithoutEnd) {
    NS::Ref<NS::Array> array = NS::make<NS::Array>();
    for (int i = 0; i < 60; ++i) {
        array = NS::Array::arrayWithObjects({array, array});
    }
    EXPECT_LT(json(array).size(), 10'000'000U);
}

} // namespace
