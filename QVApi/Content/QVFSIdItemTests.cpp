#include "QVApi/Content/QVFSIdItem.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

using NS::str;
using Tests::textOf;

TEST(FSIdItem, IsMappedByAFilesKey) {
    const auto item = Tests::itemFrom<QVFSIdItem>({
        {"FileId", str("f1")}
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(textOf(item->identifier()), "f1");
    EXPECT_FALSE(Tests::itemFrom<QVFSIdItem>({
        {"FolderId", str("d1")}
    }));
}

// The one folder key that ends in "Id".
TEST(FolderFSIdItem, IsMappedByItsOwnSpellingOfTheKey) {
    const auto item = Tests::itemFrom<QVFolderFSIdItem>({
        {"FolderId", str("d1")}
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(textOf(item->identifier()), "d1");
    EXPECT_FALSE(Tests::itemFrom<QVFolderFSIdItem>({
        {"FolderID", str("d1")}
    }));
}

TEST(FolderFSIdItem, InheritsDescriptionAndArchive) {
    const auto item = NS::make<QVFolderFSIdItem>();
    item->setIdentifier(str("d1"));
    item->setPath(str("/drive/Docs"));
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*item), " (id=d1, path=/drive/Docs)");
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*Tests::restored(item)),
              " (id=d1, path=/drive/Docs)");
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*NS::make<QVFSIdItem>()),
              " (id=(null), path=(null))");
}

} // namespace
