#include "QVApi/Content/QVFileThumbnailItem.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

TEST(FileThumbnailItem, TakesNothingFromAReply) {
    const auto item = Tests::itemFrom<QVFileThumbnailItem>({
        {"identifier", NS::str("f1")},
        {"data",       NS::str("x") }
    });
    ASSERT_TRUE(item);
    EXPECT_FALSE(item->identifier());
    EXPECT_FALSE(item->data());
}

TEST(FileThumbnailItem, ComesBackWithItsImage) {
    const auto item = NS::make<QVFileThumbnailItem>();
    item->setIdentifier(NS::str("f1"));
    item->setData(NS::Data::dataWithBytes(NS::bytesOf("\x89PNG")));
    const auto back = Tests::restored(item);
    EXPECT_EQ(Tests::textOf(back->identifier()), "f1");
    EXPECT_TRUE(NS::as<NS::Data>(back->data()));
    EXPECT_TRUE(back->data()->isEqual(item->data().get()));
}

} // namespace
