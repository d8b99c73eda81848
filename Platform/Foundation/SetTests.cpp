#include "Platform/Foundation/Set.h"

#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using NS::MutableSet;
using NS::Number;
using NS::Set;
using NS::str;

NS::Ref<Set> setOf(const std::vector<NS::Ref<NS::Object>>& objects) {
    return NS::make<Set>(objects);
}

std::string joined(const Set& set) {
    std::string text;
    for (const NS::Ref<NS::Object>& each : set) {
        text += each->description()->utf8();
    }
    return text;
}

TEST(Set, HoldsEqualObjectsOnce) {
    const auto set = setOf({str("a"), str("b"), str("a")});
    EXPECT_EQ(set->count(), 2U);
    EXPECT_EQ(joined(*set), "ab");
    EXPECT_TRUE(set->containsObject(*str("a")));
    EXPECT_FALSE(set->containsObject(*str("c")));
}

TEST(Set, KeepsTheFirstOfEqualObjects) {
    const auto first = str("a");
    EXPECT_EQ(setOf({first, str("a")})->anyObject(), NS::RefPtr<NS::Object>(first));
}

TEST(Set, HoldsNumbersByValue) {
    const auto set = setOf(
        {Number::numberWithInt(1), Number::numberWithDouble(1.0), Number::numberWithDouble(1.5)});
    EXPECT_EQ(set->count(), 2U);
}

TEST(Set, CanHoldNothingOrOneObject) {
    EXPECT_EQ(NS::make<Set>()->count(), 0U);
    EXPECT_EQ(NS::make<Set>()->anyObject(), nullptr);
    EXPECT_FALSE(NS::make<Set>()->containsObject(*str("a")));
    EXPECT_EQ(joined(*Set::setWithObject(str("a"))), "a");
}

TEST(Set, EqualsASetOfEqualObjectsInAnyOrder) {
    const auto set = setOf({str("a"), str("b")});
    EXPECT_TRUE(set->isEqual(setOf({str("b"), str("a")}).get()));
    EXPECT_EQ(set->hash(), setOf({str("b"), str("a")})->hash());
    EXPECT_TRUE(set->isEqual(
        NS::make<MutableSet>(std::vector<NS::Ref<NS::Object>>{str("b"), str("a")}).get()));
    EXPECT_FALSE(set->isEqual(setOf({str("a"), str("c")}).get()));
    EXPECT_FALSE(set->isEqual(setOf({str("a")}).get()));
    EXPECT_FALSE(set->isEqual(str("a").get()));
    EXPECT_FALSE(set->isEqual(nullptr));
}

TEST(Set, HoldsSets) {
    const auto set = setOf({setOf({str("a")}), setOf({str("a")}), setOf({str("b")})});
    EXPECT_EQ(set->count(), 2U);
}

TEST(MutableSet, AddsObjectsButNoNil) {
    const auto set = NS::make<MutableSet>();
    set->addObject(str("a"));
    set->addObject(str("a"));
    EXPECT_EQ(set->count(), 1U);
    const auto act = [&] {
        set->addObject(nullptr);
    };
    EXPECT_EQ(Tests::nameOfException(act), NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::reasonOfException(act),
              "*** -[NSMutableSet addObject:]: object cannot be nil");
}

TEST(MutableSet, RemovesObjectsAndKeepsTheOrderOfTheRest) {
    const auto set = NS::make<MutableSet>();
    for (const char* each : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}) {
        set->addObject(str(each));
    }
    set->removeObject(*str("e"));
    set->removeObject(*str("x"));
    EXPECT_EQ(joined(*set), "abcdfghij");
    EXPECT_TRUE(set->containsObject(*str("j")));
    EXPECT_FALSE(set->containsObject(*str("e")));
    set->removeAllObjects();
    EXPECT_EQ(set->count(), 0U);
    EXPECT_FALSE(set->containsObject(*str("j")));
}

TEST(MutableSet, RemovesAnObjectThatNothingElseHolds) {
    const auto set = NS::make<MutableSet>();
    set->addObject(str("a"));
    set->removeObject(*set->anyObject());
    EXPECT_EQ(set->count(), 0U);
}

TEST(MutableSet, DoesWhatASetDoes) {
    std::mt19937 random(5);
    const auto set = NS::make<MutableSet>();
    std::set<int> model;
    for (int step = 0; step < 4000; ++step) {
        const int value = static_cast<int>(random() % 50);
        const auto object = Number::numberWithInt(value);
        if (random() % 2 == 0) {
            set->addObject(object);
            model.insert(value);
        } else {
            set->removeObject(*object);
            model.erase(value);
        }
        ASSERT_EQ(set->count(), model.size());
        ASSERT_EQ(set->containsObject(*object), model.contains(value));
    }
}

} // namespace
