#include "Platform/Foundation/Nesting.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

const NS::Ref<NS::Array> kEmpty = NS::make<NS::Array>();

// As many arrays, each another object with one text in it.
NS::Ref<NS::Array> arrayOfArrays(std::size_t count) {
    const auto text = NS::str("x");
    std::vector<NS::Ref<NS::Object>> arrays;
    arrays.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        arrays.emplace_back(NS::Array::arrayWithObjects({text}));
    }
    return NS::make<NS::Array>(std::move(arrays));
}

// Goes down to a depth, a visit at each level.
void descend(std::size_t depth) {
    const NS::NestedVisit visit(*kEmpty);
    if (depth > 1) {
        descend(depth - 1);
    }
}

TEST(NestedVisit, RaisesBeyondItsDepth) {
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth); }), "none");
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth + 1); }),
              NS::kGenericException);
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth); }), "none");
}

TEST(NestedVisit, RaisesBeyondItsNumberWithinOneOperation) {
    const auto visitOften = [] {
        const NS::NestedVisit outermost(*kEmpty);
        for (int i = 0; i < 1'000'000; ++i) {
            const NS::NestedVisit visit(*kEmpty);
        }
    };
    EXPECT_EQ(Tests::nameOfException(visitOften), NS::kGenericException);
}

// A listing of the largest drive: more collections than any limit that does not look at them.
TEST(NestedVisit, FollowsAsManyCollectionsAsThereAre) {
    constexpr auto kCount = static_cast<std::size_t>(NS::Limits::kVisitsAtLeast) + 1000;
    const auto array = arrayOfArrays(kCount);
    EXPECT_TRUE(array->isEqual(arrayOfArrays(kCount).get()));
}

TEST(NestedVisit, RaisesWhereFewCollectionsUnfoldIntoMany) {
    const auto unfolding = [] {
        auto array = arrayOfArrays(100);
        for (int level = 0; level < 2; ++level) {
            array = NS::make<NS::Array>(std::vector<NS::Ref<NS::Object>>(200, array));
        }
        return array;
    };
    const auto a = unfolding();
    const auto b = unfolding();
    EXPECT_EQ(Tests::nameOfException([&] { (void)a->isEqual(b.get()); }), NS::kGenericException);
}

TEST(NestedVisit, CountsEachOperationByItself) {
    const auto visitOneByOne = [] {
        for (int i = 0; i < 1'000'001; ++i) {
            const NS::NestedVisit visit(*kEmpty);
        }
    };
    EXPECT_NO_THROW(visitOneByOne());
}

TEST(NestedVisit, CountsEachThreadByItself) {
    const NS::NestedVisit here(*kEmpty);
    std::string name;
    std::thread([&] { name = Tests::nameOfException([] { descend(NS::Limits::kDepth); }); }).join();
    EXPECT_EQ(name, "none");
    EXPECT_EQ(Tests::nameOfException([] { descend(NS::Limits::kDepth); }), NS::kGenericException);
}

TEST(ReferencesWithin, CountsEachCollectionOnce) {
    const auto inner = NS::Array::arrayWithObjects({NS::str("a"), NS::str("b")});
    const auto dictionary = NS::Dictionary::dictionaryWithEntries({
        {"one", inner},
        {"two", inner}
    });
    const auto set = NS::Set::setWithObject(dictionary);
    EXPECT_EQ(NS::referencesWithin(*inner, nullptr), 2U);
    EXPECT_EQ(NS::referencesWithin(*dictionary, nullptr), 4U + 2U);
    EXPECT_EQ(NS::referencesWithin(*set, inner.get()), 1U + 4U + 2U);
    EXPECT_EQ(NS::referencesWithin(*NS::str("text"), nullptr), 0U);
}

TEST(ReferencesWithin, EndsForACollectionThatHoldsItself) {
    const auto array = NS::make<NS::MutableArray>();
    array->addObject(array);
    array->addObject(NS::Array::arrayWithObjects({array}));
    EXPECT_EQ(NS::referencesWithin(*array, array.get()), 3U);
    array->removeAllObjects();
}

} // namespace
