#include "Platform/Foundation/Dictionary.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/LastWill.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using NS::Dictionary;
using NS::MutableDictionary;
using NS::Number;
using NS::str;

NS::Ref<Number> number(int value) {
    return Number::numberWithInt(value);
}

std::string valueOf(const Dictionary& dictionary, std::string_view key) {
    return NS::descriptionOf(dictionary.objectForKey(key).get())->utf8();
}

// The keys in the order in which they are enumerated.
std::string keysOf(const Dictionary& dictionary) {
    std::string keys;
    for (const auto& [key, value] : dictionary) {
        keys += key->description()->utf8();
    }
    return keys;
}

TEST(Dictionary, FindsValuesByEqualKeys) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"a", number(1)},
        {"b", number(2)}
    });
    EXPECT_EQ(dictionary->count(), 2U);
    EXPECT_EQ(valueOf(*dictionary, "a"), "1");
    EXPECT_EQ(dictionary->objectForKey(*str("b"))->description()->utf8(), "2");
    EXPECT_EQ(dictionary->objectForKey("c"), nullptr);
    EXPECT_EQ(dictionary->objectForKey(*number(1)), nullptr);
    EXPECT_EQ(NS::make<Dictionary>()->objectForKey("a"), nullptr);
}

TEST(Dictionary, TakesAnyObjectForAKey) {
    const auto dictionary = NS::make<MutableDictionary>();
    dictionary->setObject_forKey(str("by number"), number(1));
    dictionary->setObject_forKey(str("by array"), NS::Array::arrayWithObjects({str("x")}));
    EXPECT_EQ(dictionary->objectForKey(*Number::numberWithDouble(1.0))->description()->utf8(),
              "by number");
    EXPECT_NE(dictionary->objectForKey(*NS::Array::arrayWithObjects({str("x")})), nullptr);
    EXPECT_EQ(dictionary->objectForKey("1"), nullptr);
}

TEST(Dictionary, FindsKeysOfEveryWidthInEverySize) {
    const auto dictionary = NS::make<MutableDictionary>();
    for (int i = 0; i < 100; ++i) {
        const std::string digits = std::to_string(i);
        dictionary->setObject_forKey(number(i), "k" + digits);
        dictionary->setObject_forKey(number(i), "\xC3\xA9" + digits);
        for (const std::string& key : {"k" + digits, "\xC3\xA9" + digits}) {
            ASSERT_EQ(valueOf(*dictionary, key), digits);
            ASSERT_NE(dictionary->objectForKey(*str(key)), nullptr);
        }
        ASSERT_EQ(dictionary->objectForKey("k" + digits + " "), nullptr);
    }
}

TEST(Dictionary, RaisesForAKeyThatIsNotUtf8) {
    EXPECT_EQ(Tests::nameOfException([] { (void)NS::make<Dictionary>()->objectForKey("\xFF"); }),
              NS::kInvalidArgumentException);
}

TEST(Dictionary, KeepsTheLaterOfTwoEntriesWithEqualKeys) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"a", number(1)},
        {"b", number(2)},
        {"a", number(3)}
    });
    EXPECT_EQ(dictionary->count(), 2U);
    EXPECT_EQ(valueOf(*dictionary, "a"), "3");
    EXPECT_EQ(keysOf(*dictionary), "ab");
}

TEST(Dictionary, EnumeratesInTheOrderOfTheFirstSetting) {
    const auto dictionary = NS::make<MutableDictionary>();
    std::string expected;
    for (int i = 30; i > 0; --i) {
        dictionary->setObject_forKey(number(i), std::to_string(i) + ",");
        expected += std::to_string(i) + ",";
    }
    dictionary->setObject_forKey(number(0), "30,");
    EXPECT_EQ(keysOf(*dictionary), expected);
}

TEST(Dictionary, EqualsADictionaryOfEqualEntriesInAnyOrder) {
    const auto a = Dictionary::dictionaryWithEntries({
        {"x", number(1)},
        {"y", number(2)}
    });
    const auto b = Dictionary::dictionaryWithEntries({
        {"y", number(2)},
        {"x", number(1)}
    });
    EXPECT_TRUE(a->isEqual(b.get()));
    EXPECT_TRUE(a->isEqual(b->mutableCopy().get()));
    EXPECT_EQ(a->hash(), b->hash());
    const auto otherValue = Dictionary::dictionaryWithEntries({
        {"x", number(1)},
        {"y", number(3)}
    });
    const auto otherKey = Dictionary::dictionaryWithEntries({
        {"x", number(1)},
        {"z", number(2)}
    });
    const auto more = Dictionary::dictionaryWithEntries({
        {"x", number(1)},
        {"y", number(2)},
        {"z", number(2)}
    });
    EXPECT_FALSE(a->isEqual(otherValue.get()));
    EXPECT_FALSE(a->isEqual(otherKey.get()));
    EXPECT_FALSE(a->isEqual(more.get()));
    EXPECT_FALSE(a->isEqual(str("x").get()));
    EXPECT_FALSE(a->isEqual(nullptr));
}

TEST(Dictionary, RaisesWhenItIsComparedAndHoldsItself) {
    const auto a = NS::make<MutableDictionary>();
    const auto b = NS::make<MutableDictionary>();
    a->setObject_forKey(a, "self");
    b->setObject_forKey(b, "self");
    EXPECT_EQ(Tests::nameOfException([&] { (void)a->isEqual(b.get()); }), NS::kGenericException);
    a->removeAllObjects();
    b->removeAllObjects();
}

TEST(Dictionary, CopiesItselfOnlyWhenItCanChange) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"a", number(1)}
    });
    EXPECT_EQ(dictionary->copy(), dictionary);
    const auto changing = dictionary->mutableCopy();
    const auto copy = changing->copy();
    changing->setObject_forKey(number(2), "a");
    EXPECT_EQ(valueOf(*copy, "a"), "1");
    EXPECT_EQ(valueOf(*dictionary, "a"), "1");
    EXPECT_EQ(&copy->objectClass(), &Dictionary::kClass);
}

TEST(MutableDictionary, ReplacesTheValueAndKeepsTheKey) {
    const auto dictionary = NS::make<MutableDictionary>();
    const auto key = str("key");
    dictionary->setObject_forKey(number(1), key);
    dictionary->setObject_forKey(number(2), str("key"));
    EXPECT_EQ(dictionary->count(), 1U);
    EXPECT_EQ(valueOf(*dictionary, "key"), "2");
    EXPECT_EQ(dictionary->begin()->first, NS::Ref<NS::Object>(key));
}

TEST(MutableDictionary, KeepsATextKeyAsItWasWhenItWasSet) {
    const auto dictionary = NS::make<MutableDictionary>();
    const auto key = NS::make<NS::MutableString>(*str("before"));
    dictionary->setObject_forKey(number(1), key);
    key->setString(*str("after"));
    EXPECT_EQ(valueOf(*dictionary, "before"), "1");
    EXPECT_EQ(valueOf(*dictionary, "after"), "(null)");
}

TEST(MutableDictionary, RaisesForANilObject) {
    const auto dictionary = NS::make<MutableDictionary>();
    const auto act = [&] {
        dictionary->setObject_forKey(nullptr, "a");
    };
    EXPECT_EQ(Tests::nameOfException(act), NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::reasonOfException(act),
              "*** -[NSMutableDictionary setObject:forKey:]: object cannot be nil");
    EXPECT_EQ(dictionary->count(), 0U);
}

TEST(MutableDictionary, RemovesAKeyAndLeavesTheOthersInOrder) {
    const auto dictionary = NS::make<MutableDictionary>();
    for (const char* key : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}) {
        dictionary->setObject_forKey(str(key), key);
    }
    dictionary->removeObjectForKey(*str("c"));
    dictionary->removeObjectForKey(*str("x"));
    EXPECT_EQ(keysOf(*dictionary), "abdefghij");
    EXPECT_EQ(valueOf(*dictionary, "c"), "(null)");
    EXPECT_EQ(valueOf(*dictionary, "j"), "j");
}

TEST(MutableDictionary, CanBeEmptiedAndFilledAgain) {
    const auto dictionary = NS::make<MutableDictionary>();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 40; ++i) {
            dictionary->setObject_forKey(number(i), number(i));
        }
        EXPECT_EQ(dictionary->count(), 40U);
        dictionary->removeAllObjects();
        EXPECT_EQ(dictionary->count(), 0U);
        EXPECT_EQ(dictionary->objectForKey(*number(1)), nullptr);
    }
}

TEST(MutableDictionary, DoesWhatAMapDoes) {
    std::mt19937 random(11);
    const auto dictionary = NS::make<MutableDictionary>();
    std::map<int, int> model;
    for (int step = 0; step < 4000; ++step) {
        const int key = static_cast<int>(random() % 60);
        if (random() % 3 == 0) {
            dictionary->removeObjectForKey(*number(key));
            model.erase(key);
        } else {
            dictionary->setObject_forKey(number(step), number(key));
            model[key] = step;
        }
        ASSERT_EQ(dictionary->count(), model.size());
        const auto found = dictionary->objectForKey(*number(key));
        ASSERT_EQ(static_cast<bool>(found), model.contains(key));
        ASSERT_TRUE(!found || NS::intValue(found) == model[key]);
    }
}

TEST(MutableDictionary, IsWholeAgainWhenARemovedObjectEnds) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
                                                                  {"z", number(1)}
    })
                                ->mutableCopy();
    std::string seen;
    const auto setLastWill = [&] {
        const auto look = [&] {
            seen += keysOf(*dictionary) + valueOf(*dictionary, "a") + ";";
        };
        dictionary->setObject_forKey(NS::make<Tests::LastWill>(look), "a");
    };
    setLastWill();
    dictionary->setObject_forKey(number(2), "a");
    setLastWill();
    dictionary->removeObjectForKey(*str("a"));
    setLastWill();
    dictionary->removeAllObjects();
    EXPECT_EQ(seen, "za2;z(null);(null);");
}

} // namespace
