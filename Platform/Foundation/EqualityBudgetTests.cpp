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

// Arrays of one length have one hash: each is looked up among all the others.
TEST_F(EqualityBudget, CountsMembersThatCollideForEachOther) {
    const auto set = NS::make<NS::MutableSet>();
    for (int i = 0; i < 10; ++i) {
        set->addObject(NS::Array::arrayWithObjects({NS::Number::numberWithInt(i)}));
    }
    EXPECT_EQ(costOf(*set), 10U * (1 + 10 * 2));
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
