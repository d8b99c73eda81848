#include "QVApi/Content/QVUploadFileHandle.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

using NS::str;
using Tests::textOf;

TEST(UploadFileHandle, MapsEachKeyOfTheReply) {
    const auto item = Tests::itemFrom<QVUploadFileHandle>({
        {"TempLocation",    str("/tmp/1")                   },
        {"RequireHash",     NS::Number::numberWithBool(true)},
        {"RequireHashOnly", NS::Number::numberWithInt(0)    }
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(textOf(item->tempLocation()), "/tmp/1");
    EXPECT_EQ(textOf(item->requireHash()), "1");
    EXPECT_EQ(textOf(item->requireHashOnly()), "0");
    EXPECT_FALSE(item->path());
    EXPECT_FALSE(item->isUploading());
}

TEST(UploadFileHandle, IsNilWithoutTheLastKey) {
    EXPECT_FALSE(Tests::itemFrom<QVUploadFileHandle>({
        {"TempLocation", str("/tmp/1")                   },
        {"RequireHash",  NS::Number::numberWithBool(true)}
    }));
}

TEST(UploadFileHandle, LosesItsSizeInTheArchive) {
    const auto item = NS::make<QVUploadFileHandle>();
    item->setSize(NS::Number::numberWithInt(12));
    item->setIsUploading(NS::Number::numberWithBool(true));
    const auto back = Tests::restored(item);
    EXPECT_FALSE(back->size());
    EXPECT_EQ(textOf(back->isUploading()), "1");
}

TEST(UploadFileHandle, DescribesItself) {
    const auto item = NS::make<QVUploadFileHandle>();
    item->setIdentifier(str("u1"));
    item->setPath(str("/a"));
    item->setTempLocation(str("/t"));
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*item), " (id=u1, path=/a, temp=/t, ...)");
}

} // namespace
