#include "QVApi/Content/QVChunkUploadResult.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

TEST(ChunkUploadResult, HoldsWhatTheReplyHas) {
    const auto written = NS::Number::numberWithLongLong(1LL << 33);
    const auto item = Tests::itemFrom<QVChunkUploadResult>({
        {"TotalWritten", written}
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(item->bytesWritten(), written);
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*item), " (bytesWritten=8589934592)");
    EXPECT_FALSE(Tests::itemFrom<QVChunkUploadResult>({}));
}

TEST(ChunkUploadResult, LosesItsCountInTheArchive) {
    const auto item = NS::make<QVChunkUploadResult>();
    item->setBytesWritten(NS::Number::numberWithInt(5));
    item->setTimeReceived(2.5);
    const auto back = Tests::restored(item);
    EXPECT_EQ(back->timeReceived(), 2.5);
    EXPECT_FALSE(back->bytesWritten());
}

} // namespace
