#include "Platform/Foundation/ContentHash.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/EqualityBudget.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/URL.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using NS::str;
using Objects = std::vector<NS::Ref<NS::Object>>;

NS::Ref<NS::Object> number(int value) {
    return NS::Number::numberWithInt(value);
}

NS::Ref<NS::Array> arrayOf(NS::Ref<NS::Object> element) {
    return NS::Array::arrayWithObjects({std::move(element)});
}

NS::Ref<NS::Object> url(std::string_view text, const NS::RefPtr<NS::URL>& base = nullptr) {
    return NS::Ref<NS::Object>(*NS::URL::URLWithString_relativeToURL(*str(text), base));
}

Objects numbersUpTo(int count) {
    Objects numbers;
    for (int i = 0; i < count; ++i) {
        numbers.push_back(number(i));
    }
    return numbers;
}

class ContentHash : public testing::Test {
  protected:
    static void expectEqual(const NS::Object& a, const NS::Object& b) {
        EXPECT_TRUE(a.isEqual(&b));
        EXPECT_EQ(a.hash(), b.hash());
    }
    static void expectAllDifferent(const Objects& objects) {
        std::set<std::size_t> hashes;
        for (const auto& each : objects) {
            hashes.insert(each->hash());
        }
        EXPECT_EQ(hashes.size(), objects.size());
    }
};

TEST_F(ContentHash, TellsCollectionsOfOneCountApart) {
    Objects objects;
    for (int i = 0; i < 1000; ++i) {
        objects.push_back(arrayOf(number(i)));
        objects.push_back(NS::Set::setWithObject(number(i)));
        objects.push_back(NS::Dictionary::dictionaryWithEntries({
            {"k", number(i)}
        }));
        objects.push_back(arrayOf(arrayOf(number(i))));
    }
    expectAllDifferent(objects);
}

TEST_F(ContentHash, DependsOnTheOrderOfArraysOnly) {
    const auto a = str("a");
    const auto b = arrayOf(str("b"));
    expectAllDifferent({NS::Array::arrayWithObjects({a, b}), NS::Array::arrayWithObjects({b, a})});
    expectEqual(*NS::make<NS::Set>(Objects{a, b}), *NS::make<NS::Set>(Objects{b, a}));
    expectEqual(*NS::make<NS::Dictionary>(std::vector<NS::Dictionary::Entry>{
                    {a, b},
                    {b, a}
    }),
                *NS::make<NS::Dictionary>(std::vector<NS::Dictionary::Entry>{{b, a}, {a, b}}));
}

TEST_F(ContentHash, TellsKeysFromTheirValues) {
    expectAllDifferent({
        NS::make<NS::Dictionary>(std::vector<NS::Dictionary::Entry>{{str("a"), str("b")}}
        ),
        NS::make<NS::Dictionary>(std::vector<NS::Dictionary::Entry>{{str("b"), str("a")}}
        )
    });
}

// What each member may look at does not depend on what the others took.
TEST_F(ContentHash, OfASetOfLargeSetsDoesNotDependOnTheirOrder) {
    Objects members;
    for (int size = 1; size < 120; ++size) {
        members.push_back(NS::make<NS::Set>(numbersUpTo(size)));
    }
    const auto set = NS::make<NS::Set>(members);
    std::ranges::reverse(members);
    expectEqual(*set, *NS::make<NS::Set>(members));
}

TEST_F(ContentHash, LooksAtEveryMemberOfALargeCollection) {
    Objects objects;
    for (int i = 0; i < 50; ++i) {
        Objects members = numbersUpTo(5000);
        members[2500] = arrayOf(number(10'000 + i));
        objects.push_back(NS::make<NS::Array>(members));
        objects.push_back(NS::make<NS::Set>(members));
    }
    expectAllDifferent(objects);
}

TEST_F(ContentHash, TellsLargeArraysWithinOthersApartByTheirEnds) {
    Objects objects{arrayOf(NS::make<NS::Array>(numbersUpTo(5000)))};
    for (const std::size_t position : {std::size_t{0}, std::size_t{4999}}) {
        Objects elements = numbersUpTo(5000);
        elements[position] = str("other");
        objects.push_back(arrayOf(NS::make<NS::Array>(elements)));
    }
    expectAllDifferent(objects);
}

TEST_F(ContentHash, OfWhatStandsTooDeepIsThatOfItsCount) {
    const auto nested = [](int value, int depth) {
        auto object = number(value);
        for (int i = 0; i < depth; ++i) {
            object = arrayOf(object);
        }
        return object;
    };
    EXPECT_NE(nested(1, 10)->hash(), nested(2, 10)->hash());
    EXPECT_EQ(nested(1, 500)->hash(), nested(2, 500)->hash());
}

TEST_F(ContentHash, EndsForCollectionsThatUnfoldOrHoldThemselves) {
    auto twice = arrayOf(number(1));
    for (int i = 0; i < 60; ++i) {
        twice = NS::Array::arrayWithObjects({twice, twice});
    }
    EXPECT_EQ(twice->hash(), twice->mutableCopy()->hash());
    const auto itself = NS::make<NS::MutableArray>();
    itself->addObject(itself);
    EXPECT_EQ(itself->hash(), itself->copy()->hash());
    itself->removeAllObjects();
}

TEST_F(ContentHash, TellsURLsApartByTheirBases) {
    const auto base = NS::URL::URLWithString(*str("http://host/"));
    expectEqual(*url("b", base), *url("b", NS::URL::URLWithString(*str("http://host/"))));
    expectAllDifferent({url("b"), url("c"), url("b", base)});
}

TEST_F(ContentHash, TellsErrorsApartByTheirUserInfo) {
    const auto error = [](int code, std::string_view text) {
        return NS::Ref<NS::Object>(NS::make<NS::Error>(str("Domain"), code,
                                                       NS::Dictionary::dictionaryWithEntries({
                                                           {"k", str(text)}
        })));
    };
    expectEqual(*error(1, "a"), *error(1, "a"));
    expectAllDifferent({error(1, "a"), error(2, "a"), error(1, "b")});
}

// The budget has a million units, and each hash of the text takes two thousand.
TEST_F(ContentHash, IsPaidForBeforeItIsMade) {
    const auto array = arrayOf(str(std::string(128'000, 'x')));
    NS::EqualityBudget budget(0);
    EXPECT_EQ(NS::hashOfContents(*array, &budget), array->hash());
    EXPECT_THROW(
        {
            for (int i = 0; i < 1000; ++i) {
                (void)NS::hashOfContents(*array, &budget);
            }
        },
        NS::Exception);
}

} // namespace
