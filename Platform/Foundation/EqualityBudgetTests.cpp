#include "Platform/Foundation/EqualityBudget.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Limits.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "Platform/Foundation/URL.h"

#include <gtest/gtest.h>

namespace {

class EqualityBudget : public testing::Test {
  protected:
    std::uint64_t costOf(const NS::Object& object) { return budget.costOf(object); }

    NS::Ref<NS::String> text = NS::str(std::string(640, 'x'));
    NS::EqualityBudget budget{0};
};

TEST_F(EqualityBudget, CountsValuesByTheirLength) {
    EXPECT_EQ(costOf(*NS::Number::numberWithInt(1)), 1U);
    EXPECT_EQ(costOf(*NS::str("short")), 1U);
    EXPECT_EQ(costOf(*text), 11U);
    EXPECT_EQ(costOf(*NS::Data::dataWithBytes(NS::bytesOf(text->ascii()))), 11U);
    EXPECT_EQ(costOf(*NS::URL::URLWithString(*text)), 11U);
    EXPECT_EQ(costOf(*NS::make<NS::Error>(text, 1)), 12U);
}

TEST_F(EqualityBudget, CountsCollectionsWithAllThatIsInThem) {
    const auto array = NS::Array::arrayWithObjects({text, text, NS::make<NS::Array>()});
    EXPECT_EQ(costOf(*array), 1U + 11 + 11 + 1);
    EXPECT_EQ(costOf(*NS::Dictionary::dictionaryWithEntries({
                  {"k", text}
    })),
              1U + 1 + 11);
    EXPECT_EQ(costOf(*NS::Set::setWithObject(text)), 1U + 11);
}

NS::Ref<NS::Set> setOfNestedNumbers(int count, int depth) {
    const auto set = NS::make<NS::MutableSet>();
    for (int i = 0; i < count; ++i) {
        NS::Ref<NS::Object> member = NS::Number::numberWithInt(i);
        for (int level = 0; level < depth; ++level) {
            member = NS::Array::arrayWithObjects({member});
        }
        set->addObject(member);
    }
    return set;
}

// Each is compared with those of its hash and perhaps a neighbour; in a small set, with all.
TEST_F(EqualityBudget, CountsMembersThatCollideForEachOther) {
    EXPECT_EQ(costOf(*setOfNestedNumbers(10, 1)), 2U * (1 + 10 * 2));
    EXPECT_EQ(costOf(*setOfNestedNumbers(8, 1)), 8U * (1 + 8 * 2));
    EXPECT_EQ(costOf(*setOfNestedNumbers(10, 100)), 2U * 10 * (1 + 10 * 101));
}

TEST_F(EqualityBudget, TakesAnObjectForItselfWithoutALook) {
    EXPECT_TRUE(budget.areEqual(*text, *text));
    budget.spend(NS::Limits::kEqualityWorkAtLeast - 1); // and no more was spent
    EXPECT_EQ(Tests::nameOfException([&] { budget.areEqual(*text, *text->twin()); }),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(EqualityBudget, RaisesWhenItIsSpent) {
    budget.spend(NS::Limits::kEqualityWorkAtLeast - 1);
    budget.spend(1);
    EXPECT_EQ(Tests::nameOfException([&] { budget.spend(1); }),
              NS::kInvalidUnarchiveOperationException);
    EXPECT_EQ(Tests::nameOfException([&] { costOf(*text); }),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(EqualityBudget, GrowsWithTheArchive) {
    NS::EqualityBudget large(1000);
    large.spend(NS::Limits::kEqualityWorkAtLeast + 1000 * NS::Limits::kEqualityWorkPerByte);
    EXPECT_EQ(Tests::nameOfException([&] { large.spend(1); }),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(EqualityBudget, EndsForACollectionThatHoldsItself) {
    const auto array = NS::make<NS::MutableArray>();
    array->addObject(array);
    EXPECT_EQ(Tests::nameOfException([&] { costOf(*array); }),
              NS::kInvalidUnarchiveOperationException);
    array->removeAllObjects();
}

} // namespace
