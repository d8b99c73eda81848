#include "QVApi/Content/QVFolderListItem.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Testing/ManualClock.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/QVFolderItem.h"
#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using NS::str;
using Tests::textOf;

template <class Entry>
NS::Ref<Entry> named(const NS::Ref<NS::String>& name) {
    auto entry = NS::make<Entry>();
    entry->setName(name);
    return entry;
}

NS::Ref<QVFileItem> file(std::string_view name) {
    return named<QVFileItem>(str(name));
}

NS::Ref<QVFolderItem> folder(std::string_view name) {
    return named<QVFolderItem>(str(name));
}

NS::Ref<NS::MutableArray> arrayOf(const std::vector<NS::Ref<NS::Object>>& objects) {
    return NS::make<NS::MutableArray>(objects);
}

std::string namesIn(const NS::RefPtr<NS::Object>& list) {
    std::string names;
    for (const NS::Ref<NS::Object>& each : *NS::cast<NS::Array>(list)) {
        names += (names.empty() ? "" : " ") + textOf(each->valueForKey(*str("name")));
    }
    return names;
}

// A listing of the folders Docs and Music and the files docs, a and b.
class FolderListItem : public testing::Test {
  protected:
    const NS::Ref<QVFolderItem> docsFolder = folder("Docs");
    const NS::Ref<QVFolderItem> music = folder("Music");
    const NS::Ref<QVFileItem> docsFile = file("docs");
    const NS::Ref<QVFileItem> a = file("a");
    const NS::Ref<QVFileItem> b = file("b");
    const NS::Ref<QVFolderListItem> listing = NS::make<QVFolderListItem>();

    FolderListItem() {
        listing->setFolders(arrayOf({docsFolder, music}));
        listing->setFiles(arrayOf({docsFile, a, b}));
    }

    // The folders and the files, such as "Docs Music | docs a b".
    std::string entries() const {
        return namesIn(listing->folders()) + " | " + namesIn(listing->files());
    }
};

TEST_F(FolderListItem, CombinesFoldersAndFiles) {
    const auto items = listing->combinedItems();
    EXPECT_EQ(namesIn(items), "Docs Music docs a b");
    EXPECT_EQ(items->objectAtIndex(0), docsFolder);
    NS::cast<NS::MutableArray>(listing->files())->removeAllObjects();
    EXPECT_EQ(items->count(), 5U);
}

TEST_F(FolderListItem, FindsAnEntryByItsNameInAnyLetterCase) {
    EXPECT_EQ(listing->itemNamed(*str("DOCS")), docsFolder);
    EXPECT_EQ(listing->itemNamed(*str("docs")), docsFolder);
    EXPECT_EQ(listing->itemNamed(*str("B")), b);
    EXPECT_FALSE(listing->itemNamed(*str("Doc")));
    EXPECT_TRUE(listing->containsItemNamed(*str("mUSIC")));
    EXPECT_FALSE(listing->containsItemNamed(*str("")));
}

TEST_F(FolderListItem, FindsTheFirstOfSeveral) {
    const auto second = file("A");
    NS::cast<NS::MutableArray>(listing->files())->addObject(second);
    EXPECT_EQ(listing->itemNamed(*str("A")), a);
    NS::cast<NS::MutableArray>(listing->folders())->removeAllObjects();
    EXPECT_EQ(listing->itemNamed(*str("DOCS")), docsFile);
}

TEST_F(FolderListItem, ComparesNamesByUnicodesLowerCase) {
    const auto name = str("\u00C9T\u00C9 \u03A3\u0391\u03A3");
    a->setName(name);
    EXPECT_EQ(listing->itemNamed(*str("\u00E9t\u00E9 \u03C3\u03B1\u03C2")), a);
    EXPECT_FALSE(listing->itemNamed(*str("\u00E9t\u00E9 \u03C3\u03B1\u03C3")));
    b->setName(str("I"));
    EXPECT_EQ(listing->itemNamed(*str("i")), b); // in any language
    EXPECT_FALSE(listing->itemNamed(*str("\u0131")));
}

TEST_F(FolderListItem, FindsADecomposedNameByItsDecomposedFormOnly) {
    const auto list = Tests::itemFrom<QVTrashFolderListItem>({
        {"ResponseType", str("0")                                                                                },
        {"Files",        NS::Array::arrayWithObjects(
                      {Tests::dictionaryOf({{"FileId", str("1")}, {"Name", str("caf\u00E9")}})})}
    });
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->containsItemNamed(*str("CAFE\u0301")));
    EXPECT_FALSE(list->containsItemNamed(*str("caf\u00E9")));
    EXPECT_FALSE(list->itemNamed(*str("caf\u00E9")));
    list->removeItemNamed(*str("caf\u00E9"));
    EXPECT_EQ(list->combinedItems()->count(), 1U);
    list->removeItemNamed(*str("cafe\u0301"));
    EXPECT_EQ(list->combinedItems()->count(), 0U);
}

TEST_F(FolderListItem, ListsTheNamesOfFoldersAndFiles) {
    const auto names = listing->itemNames();
    EXPECT_EQ(textOf(names), "(\n    Docs,\n    Music,\n    docs,\n    a,\n    b\n)");
    EXPECT_EQ(names->objectAtIndex(4), b->name());
    names->removeAllObjects();
    EXPECT_EQ(entries(), "Docs Music | docs a b");
}

TEST_F(FolderListItem, RaisesForTheNamesWhenAnEntryHasNone) {
    a->setName(nullptr);
    EXPECT_EQ(Tests::nameOfException([&] { (void)listing->itemNames(); }),
              NS::kInvalidArgumentException);
}

TEST_F(FolderListItem, PutsAnEntryAtTheEndOfItsList) {
    listing->insertItem(file("c"));
    listing->insertItem(folder("Trips"));
    listing->insertItem(named<QVSharedFileItem>(str("shared")));
    listing->insertItem(named<QVSharedFolderItem>(str("Shared")));
    EXPECT_EQ(entries(), "Docs Music Trips Shared | docs a b c shared");
}

TEST_F(FolderListItem, ReplacesAnEntryWithTheVerySameName) {
    const auto newer = named<QVFileItem>(Tests::present(NS::cast<NS::String>(a->name())));
    listing->insertItem(newer);
    EXPECT_EQ(entries(), "Docs Music | docs b a");
    EXPECT_EQ(listing->itemNamed(*str("a")), newer);
}

TEST_F(FolderListItem, KeepsAnEntryWithAnEqualNameThatIsAnotherObject) {
    listing->insertItem(file("a"));
    EXPECT_EQ(entries(), "Docs Music | docs a b a");
}

TEST_F(FolderListItem, MovesAnEntryThatItHasToTheEnd) {
    listing->insertItem(docsFolder);
    listing->insertItem(docsFile);
    EXPECT_EQ(entries(), "Music Docs | a b docs");
}

TEST_F(FolderListItem, ReplacesEveryEqualEntryAndEveryOccurrence) {
    listing->setFiles(arrayOf({a, b, a, docsFile, a}));
    listing->insertItem(a);
    EXPECT_EQ(entries(), "Docs Music | b docs a");
}

// Taking them out one by one would take minutes.
TEST_F(FolderListItem, ReplacesAnyNumberOfEqualEntriesAtOnce) {
    const auto files = NS::make<NS::MutableArray>();
    for (int i = 0; i < 200'000; ++i) {
        files->addObject(NS::make<QVFileItem>());
    }
    listing->setFiles(files);
    listing->insertItem(NS::make<QVFileItem>());
    EXPECT_EQ(files->count(), 1U);
}

TEST_F(FolderListItem, RemovesTheVeryEntry) {
    listing->removeItem(a);
    listing->removeItem(file("b"));
    listing->removeItem(named<QVFileItem>(Tests::present(NS::cast<NS::String>(b->name()))));
    listing->removeItem(music);
    EXPECT_EQ(entries(), "Docs | docs b");
}

TEST_F(FolderListItem, RemovesEveryOccurrenceOfAnEntry) {
    listing->setFiles(arrayOf({a, b, a}));
    listing->removeItem(a);
    EXPECT_EQ(entries(), "Docs Music | b");
}

TEST_F(FolderListItem, TakesFilesAndFoldersOnly) {
    const std::vector<NS::RefPtr<NS::Object>> others = {listing, NS::make<QVContentItem>(),
                                                        str("a"), nullptr};
    for (const auto& each : others) {
        const auto insert = [&] {
            listing->insertItem(each);
        };
        const auto remove = [&] {
            listing->removeItem(each);
        };
        EXPECT_EQ(Tests::nameOfException(insert), "QVContentItem");
        EXPECT_EQ(Tests::reasonOfException(insert),
                  "insertItem: only support QVFileItem or QVFolderItem instances.");
        EXPECT_EQ(Tests::nameOfException(remove), "QVContentItem");
        EXPECT_EQ(Tests::reasonOfException(remove),
                  "removeItem: only support QVFileItem or QVFolderItem instances.");
    }
    EXPECT_EQ(entries(), "Docs Music | docs a b");
}

TEST_F(FolderListItem, RemovesByNameInTheVeryLetterCase) {
    listing->removeItemNamed(*str("docs"));
    EXPECT_EQ(entries(), "Docs Music | a b");
    listing->removeItemNamed(*str("DOCS"));
    EXPECT_EQ(entries(), "Docs Music | a b");
}

TEST_F(FolderListItem, RemovesEveryEntryOfAName) {
    NS::cast<NS::MutableArray>(listing->files())->addObject(file("Docs"));
    NS::cast<NS::MutableArray>(listing->files())->addObject(file("Docs"));
    listing->removeItemNamed(*str("Docs"));
    EXPECT_EQ(entries(), "Music | docs a b");
}

TEST_F(FolderListItem, RemovesEveryEntryOfAnIdentifier) {
    a->setIdentifier(str("1"));
    b->setIdentifier(str("2"));
    music->setIdentifier(str("1"));
    listing->removeItemWithIdentifier(*str("1"));
    EXPECT_EQ(entries(), "Docs | docs b");
    listing->removeItemWithIdentifier(*str("a"));
    EXPECT_EQ(entries(), "Docs | docs b");
}

TEST_F(FolderListItem, PassesOverWhatHasNoName) {
    a->setName(nullptr);
    b->setValue_forKey(NS::Number::numberWithInt(5), *str("name"));
    const auto files = NS::cast<NS::MutableArray>(listing->files());
    files->addObject(str("5"));
    EXPECT_FALSE(listing->itemNamed(*str("5")));
    EXPECT_FALSE(listing->itemNamed(*str("")));
    listing->removeItemNamed(*str("5"));
    listing->removeItemWithIdentifier(*str("5"));
    EXPECT_EQ(files->count(), 4U);
}

TEST_F(FolderListItem, HoldsNothingWithoutLists) {
    const auto bare = Tests::restoredFromNothing<QVFolderListItem>();
    bare->insertItem(a);
    bare->removeItem(a);
    bare->removeItemNamed(*str("a"));
    bare->removeItemWithIdentifier(*str("1"));
    EXPECT_FALSE(bare->itemNamed(*str("a")));
    EXPECT_EQ(bare->combinedItems()->count(), 0U);
    EXPECT_EQ(bare->itemNames()->count(), 0U);
    EXPECT_FALSE(bare->files());
}

TEST_F(FolderListItem, RaisesForListsThatCannotBeUsed) {
    listing->setValue_forKey(NS::Array::arrayWithObjects({a}), *str("files"));
    EXPECT_EQ(listing->itemNamed(*str("a")), a);
    EXPECT_EQ(Tests::nameOfException([&] { listing->insertItem(b); }),
              NS::kInvalidArgumentException);
    listing->setValue_forKey(str("no list"), *str("folders"));
    EXPECT_EQ(Tests::nameOfException([&] { (void)listing->itemNamed(*str("a")); }),
              NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::nameOfException([&] { listing->removeItemNamed(*str("a")); }),
              NS::kInvalidArgumentException);
}

TEST_F(FolderListItem, IsEncryptedUnlessItSaysZero) {
    EXPECT_FALSE(listing->isEncrypted());
    listing->setEncrypted(NS::Number::numberWithDouble(0));
    EXPECT_FALSE(listing->isEncrypted());
    listing->setEncrypted(NS::Number::numberWithInt(2));
    EXPECT_TRUE(listing->isEncrypted());
    listing->setValue_forKey(str("0"), *str("encrypted"));
    EXPECT_TRUE(listing->isEncrypted());
    listing->setEncrypted(nullptr);
    EXPECT_TRUE(listing->isEncrypted());
}

TEST_F(FolderListItem, IsEncryptedWhenItsArchiveDoesNotSay) {
    EXPECT_TRUE(Tests::restoredFromNothing<QVFolderListItem>()->isEncrypted());
    EXPECT_TRUE(Tests::restoredFromNothing<QVStubFolderListItem>()->isEncrypted());
    EXPECT_FALSE(Tests::restored(listing)->isEncrypted());
}

TEST_F(FolderListItem, DescribesItself) {
    listing->setName(str("Home"));
    listing->setUpdateTime(NS::Number::numberWithInt(12));
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*listing), " (name=Home, time=12, count=2,3, ...)");
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*NS::make<QVFolderListItem>()),
              " (name=(null), time=(null), count=0,0, ...)");
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*Tests::restoredFromNothing<QVFolderListItem>()),
              " (name=(null), time=(null), count=0,0, ...)");
}

TEST_F(FolderListItem, ComesBackWithItsEntries) {
    a->setSize(NS::Number::numberWithInt(12));
    const auto back = Tests::restored(listing);
    EXPECT_EQ(namesIn(back->folders()), "Docs Music");
    EXPECT_EQ(namesIn(back->files()), "docs a b");
    EXPECT_EQ(textOf(back->itemNamed(*str("a"))->valueForKey(*str("size"))), "12");
    back->insertItem(file("c")); // its lists can be changed
    EXPECT_EQ(namesIn(back->files()), "docs a b c");
}

TEST_F(FolderListItem, ComesBackWithOneNameWhereItWasOne) {
    const auto shared = Tests::present(NS::cast<NS::String>(a->name()));
    b->setName(shared);
    const auto back = Tests::restored(listing);
    const auto files = NS::cast<NS::Array>(back->files());
    EXPECT_TRUE(files->objectAtIndex(1)->isEqualTo(files->objectAtIndex(2).get()));
    EXPECT_FALSE(files->objectAtIndex(0)->isEqualTo(files->objectAtIndex(2).get()));
}

TEST_F(FolderListItem, KeepsItsOwnNameAsTheReplyHasIt) {
    const auto item = Tests::itemFrom<QVFolderListItem>({
        {"Name",           str("caf\u00E9")},
        {"ParentFolderID", str("0")        },
        {"ResponseType",   str("1")        }
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(textOf(item->name()), "caf\u00E9");
    EXPECT_EQ(textOf(item->updateTime()), "0");
    EXPECT_EQ(item->combinedItems()->count(), 0U);
    EXPECT_FALSE(item->identifier());
}

TEST_F(FolderListItem, HoldsAsManyEntriesAsADriveHas) {
    constexpr std::size_t kFiles = 50'000;
    for (std::size_t i = 0; i < kFiles; ++i) {
        NS::cast<NS::MutableArray>(listing->files())->addObject(file("f" + std::to_string(i)));
    }
    const auto back = Tests::restored(listing);
    EXPECT_EQ(back->combinedItems()->count(), kFiles + 5);
    EXPECT_TRUE(back->containsItemNamed(*str("F49999")));
}

TEST(SharedFolderListItem, IsNilWhenOneFolderCannotBeRead) {
    const auto good = Tests::dictionaryOf({
        {"FolderID",  str("1")},
        {"Name",      str("a")},
        {"ShareMode", str("r")}
    });
    const auto withoutMode = Tests::dictionaryOf({
        {"FolderID", str("2")},
        {"Name",     str("b")}
    });
    const auto listingOf = [](const NS::Ref<NS::Array>& folders) {
        return Tests::itemFrom<QVSharedFolderListItem>({
            {"ResponseType",  str("0")},
            {"SharedFolders", folders }
        });
    };
    ASSERT_TRUE(listingOf(NS::Array::arrayWithObjects({good})));
    EXPECT_FALSE(listingOf(NS::Array::arrayWithObjects({good, withoutMode})));
}

TEST(SharedFolderListItem, LeavesTheRestAsItBegan) {
    const auto listing = Tests::itemFrom<QVSharedFolderListItem>({
        {"ResponseType", str("0")               },
        {"Name",         str("x")               },
        {"Files",        NS::make<NS::Array>()  },
        {"Folders",      str("of another reply")}
    });
    ASSERT_TRUE(listing);
    EXPECT_FALSE(listing->name());
    EXPECT_EQ(textOf(listing->files()), "(\n)");
    EXPECT_EQ(textOf(listing->folders()), "(\n)");
}

// Its mapping has no files, but whoever asks for the conversion gets the strict one.
TEST(SharedFolderListItem, IsStrictAboutFilesToo) {
    const auto files = NS::Array::arrayWithObjects({NS::make<NS::Dictionary>()});
    const auto parse = [&](const QVContentClass& itemClass) {
        return QVContentItem::parseValue_forKey_error(itemClass, files, "files", nullptr);
    };
    EXPECT_FALSE(parse(QVSharedFolderListItem::kContentClass));
    EXPECT_TRUE(parse(QVTrashFolderListItem::kContentClass));
}

TEST(SharedUsersFolderListItem, MakesAFolderOfEachUser) {
    const auto before = NS::Date::date();
    const auto user = [](std::string_view name, std::string_view identifier) {
        return Tests::dictionaryOf({
            {"Name",      str(name)      },
            {"SharingID", str(identifier)}
        });
    };
    const auto listing = Tests::itemFrom<QVSharedUsersFolderListItem>({
        {"ResponseType", str("0")                                                               },
        {"SharedUsers",  NS::Array::arrayWithObjects({user("Ada", "7"), user("Ren\u00E9", "8")})}
    });
    ASSERT_TRUE(listing);
    EXPECT_EQ(namesIn(listing->folders()), "Ada Ren\u00E9");
    const auto first = NS::cast<QVFolderItem>(listing->itemNamed(*str("ada")));
    EXPECT_EQ(textOf(first->identifier()), "7");
    EXPECT_EQ(textOf(first->encrypted()), "0");
    EXPECT_EQ(first->dateModified(), first->dateCreated());
    EXPECT_GE(NS::cast<NS::Date>(first->dateModified())->compare(*before), 0);
    EXPECT_LE(NS::cast<NS::Date>(first->dateModified())->compare(*NS::Date::date()), 0);
}

TEST(SharedUsersFolderListItem, DatesEachUserByTheMomentOfItsOwn) {
    NS::ManualClock clock(1);
    clock.setTick(1);
    const NS::ScopedClock scope(clock);
    const auto user = NS::make<NS::Dictionary>();
    const auto listing = Tests::itemFrom<QVSharedUsersFolderListItem>({
        {"ResponseType", str("0")                                 },
        {"SharedUsers",  NS::Array::arrayWithObjects({user, user})}
    });
    ASSERT_TRUE(listing);
    double moment = 0;
    const auto folders = listing->combinedItems();
    for (const NS::Ref<NS::Object>& each : *folders) {
        const auto folder = NS::cast<QVFolderItem>(each);
        EXPECT_EQ(NS::cast<NS::Date>(folder->dateModified())->timeIntervalSinceReferenceDate(),
                  ++moment);
        EXPECT_EQ(folder->dateCreated(), folder->dateModified());
    }
    EXPECT_EQ(moment, 2);
}

TEST(SharedUsersFolderListItem, StoresWhatAUserHasAsItIs) {
    const auto number = NS::Number::numberWithInt(7);
    const auto user = Tests::dictionaryOf({
        {"Name",      NS::Null::null()},
        {"SharingID", number          }
    });
    const auto listing = Tests::itemFrom<QVSharedUsersFolderListItem>({
        {"ResponseType", str("0")                           },
        {"SharedUsers",  NS::Array::arrayWithObjects({user})}
    });
    ASSERT_TRUE(listing);
    const auto folder = listing->combinedItems()->objectAtIndex(0);
    EXPECT_EQ(folder->valueForKey(*str("name")), NS::Null::null());
    EXPECT_EQ(folder->valueForKey(*str("identifier")), number);
}

TEST(SharedUsersFolderListItem, StoresWhatAUserLacksAsAbsent) {
    const auto listing = Tests::itemFrom<QVSharedUsersFolderListItem>({
        {"ResponseType", str("0")                                                           },
        {"SharedUsers",  NS::Array::arrayWithObjects({NS::make<NS::Dictionary>(), str("x")})}
    });
    ASSERT_TRUE(listing);
    ASSERT_EQ(listing->combinedItems()->count(), 2U);
    const auto folder = listing->combinedItems()->objectAtIndex(0);
    EXPECT_FALSE(folder->valueForKey(*str("name")));
    EXPECT_FALSE(folder->valueForKey(*str("identifier")));
}

TEST_F(FolderListItem, CanBeLookedThroughWhileAnotherThreadRenamesItsEntries) {
    std::thread writer([&] {
        for (int i = 0; i < 5000; ++i) {
            a->setName(str("a" + std::to_string(i)));
            music->setName(str("Music" + std::to_string(i)));
        }
    });
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(listing->itemNamed(*str("B")), b);
        EXPECT_EQ(listing->itemNames()->count(), 5U);
        listing->removeItemNamed(*str("none"));
    }
    writer.join();
    EXPECT_EQ(listing->itemNamed(*str("music4999")), music);
}

} // namespace
