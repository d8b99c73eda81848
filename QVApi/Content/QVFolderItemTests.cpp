#include "QVApi/Content/QVFolderItem.h"

#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

using NS::str;
using Tests::textOf;

NS::Ref<QVFolderItem> folderNamed(const NS::Ref<NS::String>& name) {
    auto folder = NS::make<QVFolderItem>();
    folder->setName(name);
    return folder;
}

TEST(FolderItem, IsEncryptedAsTheReplySays) {
    const auto encrypted = Tests::itemFrom<QVFolderItem>({
        {"FolderID",  str("d1")                   },
        {"Name",      str("Docs")                 },
        {"Encrypted", NS::Number::numberWithInt(1)}
    });
    EXPECT_EQ(textOf(encrypted->encrypted()), "1");
    const auto silent = Tests::itemFrom<QVFolderItem>({
        {"FolderID", str("d1")  },
        {"Name",     str("Docs")}
    });
    EXPECT_EQ(textOf(silent->encrypted()), "0");
    EXPECT_EQ(textOf(silent->dateCreated()), "1970-01-01 00:00:00 +0000");
}

TEST(FolderItem, IsNilForAFilesSpellingOfTheIdentifier) {
    EXPECT_FALSE(Tests::itemFrom<QVFolderItem>({
        {"FolderId", str("d1")  },
        {"Name",     str("Docs")}
    }));
}

TEST(FolderItem, StoresItsNameDecomposed) {
    const auto folder = Tests::itemFrom<QVSharedFolderItem>({
        {"FolderID",  str("d1")          },
        {"Name",      str("\u00C4\u00DF")},
        {"ShareMode", str("r")           }
    });
    EXPECT_EQ(textOf(folder->name()), "A\u0308\u00DF");
}

TEST(FolderItem, EqualsAFolderWithTheVerySameName) {
    const auto name = str("Docs");
    const auto shared = NS::make<QVSharedFolderItem>();
    shared->setName(name);
    EXPECT_TRUE(folderNamed(name)->isEqualTo(folderNamed(name).get()));
    EXPECT_TRUE(folderNamed(name)->isEqualTo(shared.get()));
    EXPECT_FALSE(folderNamed(name)->isEqualTo(folderNamed(str("Docs")).get()));
    EXPECT_TRUE(NS::make<QVFolderItem>()->isEqualTo(NS::make<QVFolderItem>().get()));
}

TEST(FolderItem, IsComparedWithOtherRecordsByItsIdentifier) {
    const auto folder = folderNamed(str("a"));
    const auto file = NS::make<QVFileItem>();
    EXPECT_TRUE(folder->isEqualTo(file.get()));
    file->setIdentifier(str("f1"));
    EXPECT_FALSE(folder->isEqualTo(file.get()));
}

TEST(FolderItem, DescribesItself) {
    const auto folder = folderNamed(str("Docs"));
    folder->setIdentifier(str("d1"));
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*folder), " (name=Docs, encrypted=0, id=d1, ...)");
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*Tests::restoredFromNothing<QVFolderInfoItem>()),
              " (name=(null), encrypted=(null), id=(null), ...)");
}

TEST(FolderItem, ComesBackWithoutItsInitialisersValue) {
    EXPECT_FALSE(Tests::restoredFromNothing<QVFolderItem>()->encrypted());
    EXPECT_FALSE(Tests::restoredFromNothing<QVSharedFolderItem>()->encrypted());
}

TEST(FolderInfoItem, LeavesThePathToItsOwner) {
    const auto folder = Tests::itemFrom<QVFolderInfoItem>({
        {"FolderID",    str("d1")  },
        {"Name",        str("Docs")},
        {"Link",        str("l")   },
        {"Description", str("text")},
        {"Access",      str("none")},
        {"Path",        str("/d")  }
    });
    ASSERT_TRUE(folder);
    EXPECT_FALSE(folder->path());
    EXPECT_EQ(textOf(folder->folderDescription()), "text");
    EXPECT_EQ(textOf(folder->access()), "none");
}

} // namespace
