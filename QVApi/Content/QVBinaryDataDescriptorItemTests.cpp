#include "QVApi/Content/QVBinaryDataDescriptorItem.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using NS::Number;
using Tests::textOf;

NS::Ref<QVBinaryDataDescriptorItem> transfer(NS::RefPtr<Number> completed,
                                             NS::RefPtr<Number> total) {
    auto item = NS::make<QVBinaryDataDescriptorItem>();
    item->setCompletedBytes(std::move(completed));
    item->setTotalBytes(std::move(total));
    return item;
}

NS::Ref<QVBinaryDataDescriptorItem> transfer(int completed, int total) {
    return transfer(Number::numberWithInt(completed), Number::numberWithInt(total));
}

TEST(BinaryDataDescriptorItem, IsReadyUpToWhatIsThere) {
    EXPECT_TRUE(transfer(100, 1000)->isBytesReady(50));
    EXPECT_TRUE(transfer(100, 1000)->isBytesReady(100));
    EXPECT_FALSE(transfer(100, 1000)->isBytesReady(101));
    EXPECT_FALSE(transfer(100, 1000)->isBytesReady(200));
    EXPECT_FALSE(transfer(100, 1000)->isCompleted());
}

TEST(BinaryDataDescriptorItem, IsReadyForAnythingWhenItIsFinished) {
    EXPECT_TRUE(transfer(1000, 1000)->isBytesReady(5000));
    EXPECT_TRUE(transfer(1000, 1000)->isCompleted());
    EXPECT_TRUE(
        transfer(Number::numberWithDouble(1000), Number::numberWithInt(1000))->isBytesReady(5000));
}

TEST(BinaryDataDescriptorItem, IsNotFinishedWhileTheWholeIsUnknown) {
    EXPECT_FALSE(transfer(10, 0)->isBytesReady(20));
    EXPECT_FALSE(transfer(10, 0)->isCompleted());
    EXPECT_FALSE(transfer(0, 0)->isBytesReady(1)); // though the two counts are equal
    EXPECT_TRUE(transfer(0, 0)->isCompleted());
}

TEST(BinaryDataDescriptorItem, IsAlwaysReadyForNothing) {
    EXPECT_TRUE(NS::make<QVBinaryDataDescriptorItem>()->isBytesReady(0));
    EXPECT_TRUE(transfer(0, 1000)->isBytesReady(0));
}

TEST(BinaryDataDescriptorItem, IsNotFinishedWithoutACount) {
    EXPECT_FALSE(NS::make<QVBinaryDataDescriptorItem>()->isCompleted());
    EXPECT_FALSE(NS::make<QVBinaryDataDescriptorItem>()->isBytesReady(1));
    EXPECT_FALSE(transfer(Number::numberWithInt(5), nullptr)->isCompleted());
    EXPECT_FALSE(transfer(Number::numberWithInt(5), nullptr)->isBytesReady(6));
    EXPECT_FALSE(transfer(nullptr, Number::numberWithInt(5))->isCompleted());
    EXPECT_FALSE(transfer(nullptr, Number::numberWithInt(5))->isBytesReady(1));
}

TEST(BinaryDataDescriptorItem, CountsBeyondTheSignedRange) {
    constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
    const auto item =
        transfer(Number::numberWithUnsignedLongLong(kMost - 1), Number::numberWithInt(7));
    EXPECT_TRUE(item->isBytesReady(kMost - 1));
    EXPECT_FALSE(item->isBytesReady(kMost));
}

TEST(BinaryDataDescriptorItem, RaisesForCountsThatAreNoNumbers) {
    const auto item = transfer(1, 2);
    item->setValue_forKey(NS::str("many"), *NS::str("totalBytes"));
    EXPECT_EQ(Tests::nameOfException([&] { (void)item->isCompleted(); }),
              NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::nameOfException([&] { (void)item->isBytesReady(2); }),
              NS::kInvalidArgumentException);
}

TEST(BinaryDataDescriptorItem, ReadsAndSetsItsScalarByKey) {
    const auto item = NS::make<QVBinaryDataDescriptorItem>();
    const auto key = NS::str("encrypted");
    item->setValue_forKey(Number::numberWithBool(true), *key);
    EXPECT_TRUE(item->encrypted());
    EXPECT_EQ(NS::cast<Number>(item->valueForKey(*key))->type(), Number::Type::kBoolean);
    EXPECT_EQ(Tests::nameOfException([&] { item->setValue_forKey(nullptr, *key); }),
              NS::kInvalidArgumentException);
    EXPECT_TRUE(item->encrypted());
}

TEST(BinaryDataDescriptorItem, LosesItsErrorInTheArchive) {
    const auto item = transfer(10, 20);
    item->setEncrypted(true);
    item->setError(NS::make<NS::Error>(NS::str("Domain"), 5));
    const auto back = Tests::restored(item);
    EXPECT_EQ(textOf(back->completedBytes()), "10");
    EXPECT_EQ(textOf(back->totalBytes()), "20");
    EXPECT_TRUE(back->encrypted());
    EXPECT_FALSE(back->error());
}

TEST(BinaryDataDescriptorItem, CannotBeRestoredWithoutItsScalar) {
    EXPECT_EQ(Tests::nameOfException(
                  [] { (void)Tests::restoredFromNothing<QVBinaryDataDescriptorItem>(); }),
              NS::kInvalidArgumentException);
}

TEST(BinaryDataDescriptorItem, DescribesItself) {
    const auto item = transfer(10, 20);
    item->setIdentifier(NS::str("t1"));
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*item), " (id=t1, completed=10, total=20)");
}

} // namespace
