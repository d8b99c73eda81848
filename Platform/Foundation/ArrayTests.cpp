#include "Platform/Foundation/Array.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/LastWill.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace {

using NS::Array;
using NS::MutableArray;
using NS::str;

NS::Ref<Array> abc() {
    return Array::arrayWithObjects({str("a"), str("b"), str("c")});
}

std::string joined(const Array& array) {
    std::string text;
    for (const NS::Ref<NS::Object>& each : array) {
        text += each->description()->utf8();
    }
    return text;
}

TEST(Array, HoldsObjectsInOrder) {
    const auto array = abc();
    EXPECT_EQ(array->count(), 3U);
    EXPECT_EQ(joined(*array), "abc");
    EXPECT_EQ(array->objectAtIndex(2)->description()->utf8(), "c");
    EXPECT_EQ(array->firstObject()->description()->utf8(), "a");
}

TEST(Array, KeepsItsObjectsAlive) {
    const auto object = str("object");
    {
        const auto array = Array::arrayWithObjects({object, object});
        EXPECT_EQ(object->referenceCount(), 3U);
    }
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST(Array, HasNoFirstObjectWhenItIsEmpty) {
    EXPECT_EQ(NS::make<Array>()->firstObject(), nullptr);
    EXPECT_EQ(NS::make<Array>()->count(), 0U);
}

TEST(Array, RaisesForAnIndexOutsideOfIt) {
    const auto act = [] {
        (void)abc()->objectAtIndex(3);
    };
    EXPECT_EQ(Tests::nameOfException(act), NS::kRangeException);
    EXPECT_EQ(Tests::reasonOfException(act),
              "*** -[NSArray objectAtIndex:]: index 3 beyond bounds [0 .. 2]");
    EXPECT_EQ(Tests::reasonOfException([] { (void)NS::make<Array>()->objectAtIndex(0); }),
              "*** -[NSArray objectAtIndex:]: index 0 beyond for empty array");
    EXPECT_EQ(Tests::reasonOfException([] { abc()->mutableCopy()->removeObjectAtIndex(9); }),
              "*** -[NSMutableArray removeObjectAtIndex:]: index 9 beyond bounds [0 .. 2]");
}

TEST(Array, ContainsWhatEqualsAnElement) {
    EXPECT_TRUE(abc()->containsObject(*str("b")));
    EXPECT_FALSE(abc()->containsObject(*str("d")));
    const auto numbers = Array::arrayWithObjects({NS::Number::numberWithInt(2)});
    EXPECT_TRUE(numbers->containsObject(*NS::Number::numberWithDouble(2.0)));
}

TEST(Array, GivesNewArraysWithMoreObjects) {
    const auto array = abc();
    EXPECT_EQ(joined(*array->arrayByAddingObject(str("d"))), "abcd");
    EXPECT_EQ(joined(*array->arrayByAddingObjectsFromArray(*abc())), "abcabc");
    EXPECT_EQ(joined(*array->arrayByAddingObjectsFromArray(*array)), "abcabc");
    EXPECT_EQ(joined(*array), "abc");
}

TEST(Array, CopiesItselfOnlyWhenItCanChange) {
    const auto array = abc();
    EXPECT_EQ(array->copy(), array);
    const auto changing = array->mutableCopy();
    const auto copy = changing->copy();
    changing->removeAllObjects();
    EXPECT_EQ(joined(*copy), "abc");
    EXPECT_EQ(&copy->objectClass(), &Array::kClass);
    EXPECT_EQ(joined(*array), "abc");
}

TEST(Array, EqualsAnArrayOfEqualObjectsInTheSameOrder) {
    EXPECT_TRUE(abc()->isEqual(abc().get()));
    EXPECT_TRUE(abc()->isEqual(abc()->mutableCopy().get()));
    EXPECT_EQ(abc()->hash(), abc()->mutableCopy()->hash());
    EXPECT_FALSE(abc()->isEqual(Array::arrayWithObjects({str("a"), str("c"), str("b")}).get()));
    EXPECT_FALSE(abc()->isEqual(Array::arrayWithObjects({str("a"), str("b")}).get()));
    EXPECT_FALSE(abc()->isEqual(NS::make<Array>().get()));
    EXPECT_FALSE(abc()->isEqual(str("abc").get()));
    EXPECT_FALSE(abc()->isEqual(nullptr));
}

TEST(Array, ComparesNestedArrays) {
    const auto nested = Array::arrayWithObjects({abc(), abc()});
    EXPECT_TRUE(nested->isEqual(Array::arrayWithObjects({abc(), abc()}).get()));
    EXPECT_FALSE(nested->isEqual(Array::arrayWithObjects({abc(), NS::make<Array>()}).get()));
}

TEST(Array, RaisesWhenItIsComparedAndHoldsItself) {
    const auto a = NS::make<MutableArray>();
    const auto b = NS::make<MutableArray>();
    a->addObject(a);
    b->addObject(b);
    EXPECT_TRUE(a->isEqual(a.get()));
    EXPECT_EQ(Tests::nameOfException([&] { (void)a->isEqual(b.get()); }), NS::kGenericException);
    EXPECT_EQ(Tests::nameOfException([&] { (void)a->valueForKey(str("x")); }),
              NS::kGenericException);
    a->removeAllObjects();
    b->removeAllObjects();
    EXPECT_TRUE(a->isEqual(b.get())); // what was raised leaves nothing behind
}

TEST(Array, RaisesWhenAComparisonUnfoldsWithoutEnd) {
    NS::Ref<Array> a = abc();
    NS::Ref<Array> b = abc();
    for (int level = 0; level < 60; ++level) {
        a = Array::arrayWithObjects({a, a});
        b = Array::arrayWithObjects({b, b});
    }
    EXPECT_EQ(Tests::nameOfException([&] { (void)a->isEqual(b.get()); }), NS::kGenericException);
}

TEST(MutableArray, HasARevisionOfItsOwnForEachChange) {
    const auto list = NS::make<MutableArray>();
    std::set<std::uint64_t> seen = {NS::make<MutableArray>()->revision()};
    const auto isNew = [&] {
        return seen.insert(list->revision()).second;
    };
    EXPECT_TRUE(isNew());
    list->addObject(str("a"));
    EXPECT_TRUE(isNew());
    list->addObject(str("b"));
    list->removeObjectAtIndex(0);
    EXPECT_TRUE(isNew());
    list->removeObject(*str("b"));
    EXPECT_TRUE(isNew());
    list->removeAllObjects();
    EXPECT_TRUE(isNew());
}

TEST(MutableArray, KeepsItsRevisionWhileItStaysTheSame) {
    const auto list = NS::make<MutableArray>();
    list->addObject(str("a"));
    const std::uint64_t revision = list->revision();
    list->removeObject(*str("b"));
    (void)list->mutableCopy();
    EXPECT_EQ(list->revision(), revision);
}

TEST(MutableArray, AddsObjectsButNoNil) {
    const auto array = NS::make<MutableArray>();
    array->addObject(str("a"));
    array->addObject(str("b"));
    EXPECT_EQ(joined(*array), "ab");
    const auto act = [&] {
        array->addObject(nullptr);
    };
    EXPECT_EQ(Tests::nameOfException(act), NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::reasonOfException(act),
              "*** -[NSMutableArray addObject:]: object cannot be nil");
    EXPECT_EQ(array->count(), 2U);
}

TEST(MutableArray, RemovesEveryEqualObject) {
    const auto array = abc()->arrayByAddingObject(str("a"))->mutableCopy();
    array->removeObject(*str("a"));
    EXPECT_EQ(joined(*array), "bc");
    array->removeObject(*str("x"));
    EXPECT_EQ(joined(*array), "bc");
}

TEST(MutableArray, RemovesEveryOccurrenceOfOneObject) {
    const auto one = str("a");
    const auto array = NS::make<MutableArray>(std::vector<NS::Ref<NS::Object>>{one, str("a"), one});
    array->removeObjectIdenticalTo(*one);
    EXPECT_EQ(joined(*array), "a");
    EXPECT_NE(array->firstObject(), NS::RefPtr<NS::Object>(one));
    EXPECT_EQ(one->referenceCount(), 1U);
}

TEST(MutableArray, RemovesByIndex) {
    const auto array = abc()->mutableCopy();
    array->removeObjectAtIndex(1);
    EXPECT_EQ(joined(*array), "ac");
    array->removeObjectAtIndex(1);
    EXPECT_EQ(joined(*array), "a");
    array->removeAllObjects();
    EXPECT_EQ(array->count(), 0U);
}

TEST(MutableArray, RemovesAnObjectThatNothingElseHolds) {
    const auto array = NS::make<MutableArray>();
    array->addObject(str("a"));
    array->addObject(str("a"));
    array->removeObject(*array->objectAtIndex(0));
    EXPECT_EQ(array->count(), 0U);
}

TEST(MutableArray, RemovesWhatPassesATest) {
    const auto array = abc()->mutableCopy();
    const auto second = array->objectAtIndex(1);
    array->addObject(second);
    const auto isSecond = [&](const NS::Object& each) {
        return &each == second.get();
    };
    EXPECT_EQ(array->removeObjectsPassingTest(isSecond), 2U);
    EXPECT_EQ(joined(*array), "ac");
    EXPECT_EQ(array->removeObjectsPassingTest(isSecond), 0U);
    EXPECT_EQ(joined(*array), "ac");
    EXPECT_EQ(array->removeObjectsPassingTest([](const NS::Object&) { return true; }), 2U);
    EXPECT_EQ(array->count(), 0U);
}

TEST(MutableArray, KeepsTheOrderOfWhatStaysWhateverGoes) {
    constexpr unsigned kElements = 6;
    std::vector<NS::Ref<NS::Object>> elements;
    for (unsigned i = 0; i < kElements; ++i) {
        elements.emplace_back(str(std::to_string(i)));
    }
    for (unsigned goes = 0; goes < 1U << kElements; ++goes) {
        const auto array = NS::make<MutableArray>(elements);
        std::string expected;
        for (unsigned i = 0; i < kElements; ++i) {
            expected += (goes >> i & 1U) != 0 ? "" : std::to_string(i);
        }
        unsigned next = 0;
        array->removeObjectsPassingTest(
            [&](const NS::Object&) { return (goes >> next++ & 1U) != 0; });
        EXPECT_EQ(joined(*array), expected);
    }
}

TEST(MutableArray, StaysAsItIsWhenATestRaises) {
    const auto array = abc()->mutableCopy();
    const auto last = array->objectAtIndex(2);
    EXPECT_ANY_THROW(array->removeObjectsPassingTest([&](const NS::Object& each) {
        if (&each == last.get()) {
            NS::Exception::raise(NS::kGenericException, "no more");
        }
        return true;
    }));
    EXPECT_EQ(joined(*array), "abc");
}

TEST(MutableArray, IsWholeAgainWhenARemovedObjectEnds) {
    const auto array = abc()->mutableCopy();
    std::string seen;
    const auto addLastWill = [&] {
        array->addObject(NS::make<Tests::LastWill>([&] { seen += joined(*array) + ";"; }));
    };
    addLastWill();
    array->removeObjectIdenticalTo(*array->objectAtIndex(3));
    addLastWill();
    array->removeObjectAtIndex(3);
    addLastWill();
    array->removeAllObjects();
    EXPECT_EQ(seen, "abc;abc;;");
}

TEST(MutableArray, BeginsEmptyWhateverItHasRoomFor) {
    const auto array = MutableArray::arrayWithCapacity(3);
    EXPECT_EQ(array->count(), 0U);
    array->addObject(NS::str("a"));
    EXPECT_EQ(joined(*array), "a");
}

TEST(MutableArray, IsMadeByItsClass) {
    EXPECT_TRUE(MutableArray::kClass.create()->isKindOfClass(MutableArray::kClass));
}

} // namespace
