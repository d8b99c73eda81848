#include "QVApi/Content/QVFileItem.h"

#include "QVApi/Content/QVFolderItem.h"
#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

using NS::str;
using Tests::textOf;

template <class Item = QVFileItem>
NS::Ref<Item> fileNamed(const NS::Ref<NS::String>& name) {
    auto file = NS::make<Item>();
    file->setName(name);
    return file;
}

TEST(FileItem, NeedsAnIdentifierAndANameOnly) {
    const auto file = Tests::itemFrom<QVFileItem>({
        {"FileId", str("f1")   },
        {"Name",   str("a.txt")}
    });
    ASSERT_TRUE(file);
    EXPECT_EQ(textOf(file->size()), "0");
    EXPECT_EQ(textOf(file->requireCompression()), "0");
    EXPECT_EQ(textOf(file->dateModified()), "1970-01-01 00:00:00 +0000");
}

TEST(FileItem, StoresItsNameDecomposed) {
    const auto file = Tests::itemFrom<QVFileItem>({
        {"FileId", str("f1")       },
        {"Name",   str("caf\u00E9")}
    });
    EXPECT_EQ(textOf(file->name()), "cafe\u0301");
    EXPECT_EQ(NS::cast<NS::String>(file->name())->length(), 5U);
}

TEST(FileItem, ReadsItsDateFromText) {
    const auto file = Tests::itemFrom<QVFileItem>({
        {"FileId",       str("f1")        },
        {"Name",         str("a")         },
        {"DateModified", str("1500000000")}
    });
    EXPECT_EQ(textOf(file->dateModified()), "2017-07-14 02:40:00 +0000");
}

TEST(FileItem, EqualsAFileWithTheVerySameName) {
    const auto name = str("a.txt");
    EXPECT_TRUE(fileNamed(name)->isEqualTo(fileNamed(name).get()));
    EXPECT_TRUE(fileNamed(name)->isEqualTo(fileNamed<QVSharedFileItem>(name).get()));
    EXPECT_TRUE(fileNamed<QVFileInfoItem>(name)->isEqualTo(fileNamed(name).get()));
    EXPECT_TRUE(NS::make<QVFileItem>()->isEqualTo(NS::make<QVFileItem>().get()));
}

TEST(FileItem, DiffersForAnEqualNameThatIsAnotherObject) {
    const auto file = fileNamed(str("a.txt"));
    const auto other = fileNamed(str("a.txt"));
    const auto identifier = str("f1");
    file->setIdentifier(identifier);
    other->setIdentifier(identifier);
    EXPECT_FALSE(file->isEqualTo(other.get()));
    EXPECT_FALSE(
        file->isEqual(fileNamed(Tests::present(NS::cast<NS::String>(file->name()))).get()));
}

TEST(FileItem, IsComparedWithOtherRecordsByItsIdentifier) {
    const auto name = str("a");
    const auto file = fileNamed(name);
    const auto folder = NS::make<QVFolderItem>();
    folder->setName(name);
    file->setIdentifier(name);
    EXPECT_FALSE(file->isEqualTo(folder.get()));
    folder->setIdentifier(name);
    folder->setName(str("b"));
    EXPECT_TRUE(file->isEqualTo(folder.get()));
    EXPECT_FALSE(file->isEqualTo(name.get()));
    EXPECT_FALSE(file->isEqualTo(nullptr));
}

TEST(FileItem, DescribesItself) {
    const auto file = Tests::itemFrom<QVFileItem>({
        {"FileId", str("f1")                    },
        {"Name",   str("a.txt")                 },
        {"Size",   NS::Number::numberWithInt(12)}
    });
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*file), " (name=a.txt, size=12, id=f1, ...)");
    const auto info = NS::make<QVFileInfoItem>();
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*info),
              " (name=(null), size=(null), id=(null), ...)");
    EXPECT_TRUE(info->description()->utf8().starts_with("<QVFileInfoItem: 0x"));
}

TEST(FileItem, ComesBackWithItsTypes) {
    const auto file = Tests::itemFrom<QVFileItem>({
        {"FileId",       str("f1")                                   },
        {"Name",         str("caf\u00E9")                            },
        {"Size",         NS::Number::numberWithLongLong(1LL << 40)   },
        {"DateModified", NS::Number::numberWithLongLong(1500000000LL)}
    });
    const auto back = Tests::restored(Tests::present(file));
    EXPECT_TRUE(back->name()->isEqual(file->name().get()));
    EXPECT_TRUE(back->size()->isEqual(file->size().get()));
    EXPECT_TRUE(back->dateModified()->isEqual(file->dateModified().get()));
    EXPECT_TRUE(NS::as<NS::Date>(back->dateModified()));
    EXPECT_FALSE(back->isEqualTo(file.get())); // its name is another object now
}

TEST(SharedFileItem, TakesNoCompressionFromTheReply) {
    const auto file = Tests::itemFrom<QVSharedFileItem>({
        {"FileId",             str("f1")},
        {"Name",               str("a") },
        {"RequireCompression", str("1") },
        {"ShareMode",          str("rw")}
    });
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->requireCompression());
    EXPECT_EQ(textOf(file->shareMode()), "rw");
}

TEST(FileInfoItem, LeavesPathAndPriceToItsOwner) {
    const auto file = Tests::itemFrom<QVFileInfoItem>({
        {"FileId",        str("f1")  },
        {"Name",          str("a")   },
        {"Link",          str("l")   },
        {"DownloadLink",  str("d")   },
        {"StreamingLink", str("s")   },
        {"Access",        str("none")},
        {"Description",   str("text")},
        {"Path",          str("/a")  },
        {"Price",         str("1")   }
    });
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->path());
    EXPECT_FALSE(file->price());
    EXPECT_EQ(textOf(file->fileDescription()), "text");
}

} // namespace
