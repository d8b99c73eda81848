#include "QVApi/Content/QVContentItem.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Testing/ArchiveText.h"
#include "Platform/Foundation/Testing/HandMadeArchive.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVApi/Content/QVConversions.h"
#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// A class with everything that classes of the content model have of their own.
class SampleItem : public QVContentItem {
    QV_CONTENT_ITEM(SampleItem, QVContentItem)
  public:
    SampleItem() { setIdentifier(NS::str("initial")); }

    NS_RECORD_PROPERTY(NS::String, title, setTitle)
    NS_RECORD_PROPERTY(NS::Number, size, setSize)
    NS_RECORD_PROPERTY(NS::String, owner, setOwner)
    NS_RECORD_SCALAR(bool, marked, setMarked)
};

constexpr QVMapping kSampleMapping[] = {
    {"title", "Title"     },
    {"size",  "Size"      },
    {"owner", "Owner.Name"},
};
constexpr std::string_view kSampleArchived[] = {"title", "size", "marked"};
constexpr QVConversion kSampleConversions[] = {
    {"size", &qvLongInteger},
};

// A class that adds to its superclass's archive list and has nothing else of its own.
class DerivedItem final : public SampleItem {
    QV_CONTENT_ITEM(DerivedItem, SampleItem)
  public:
    NS_RECORD_PROPERTY(NS::String, extra, setExtra)
};

constexpr std::string_view kDerivedArchived[] = {"extra"};

} // namespace

QV_DEFINE_CONTENT_ITEM(SampleItem, .mapping = kSampleMapping, .conversions = kSampleConversions,
                       .archiveList = QVArchiveList::kOwn, .archived = kSampleArchived)
QV_DEFINE_CONTENT_ITEM(DerivedItem, .archiveList = QVArchiveList::kExtended,
                       .archived = kDerivedArchived)

namespace {

std::string text(const NS::RefPtr<NS::Object>& object) {
    return NS::descriptionOf(object.get())->utf8();
}

NS::Ref<NS::Dictionary> owner() {
    return NS::Dictionary::dictionaryWithEntries({
        {"Name", NS::str("Ada")}
    });
}

class ContentItem : public testing::Test {
  protected:
    static NS::RefPtr<SampleItem>
    build(const NS::Dictionary& reply,
          const QVContentClass& itemClass = SampleItem::kContentClass) {
        return NS::as<SampleItem>(QVContentItem::itemWithDict_error(itemClass, reply, nullptr));
    }
    template <class Item>
    static NS::RefPtr<Item> restored(const NS::Ref<Item>& item) {
        return NS::as<Item>(NS::KeyedUnarchiver::unarchiveObjectWithData(
            *NS::KeyedArchiver::archivedDataWithRootObject(item)));
    }
};

TEST_F(ContentItem, IsBuiltFromAReplyByItsTable) {
    const auto title = NS::str("Docs");
    const auto item = build(*NS::Dictionary::dictionaryWithEntries({
        {"Title", title          },
        {"Size",  NS::str("12.9")},
        {"Owner", owner()        },
        {"Other", title          }
    }));
    ASSERT_TRUE(item);
    EXPECT_EQ(item->title(), title);
    EXPECT_EQ(text(item->size()), "12");
    EXPECT_EQ(text(item->owner()), "Ada");
    EXPECT_EQ(text(item->identifier()), "initial");
}

TEST_F(ContentItem, IsNilWithoutAKeyThatIsPassedThrough) {
    EXPECT_FALSE(build(*NS::Dictionary::dictionaryWithEntries({
        {"Title", NS::str("Docs")},
        {"Size",  NS::str("1")   }
    })));
    EXPECT_FALSE(build(*NS::Dictionary::dictionaryWithEntries({
        {"Owner", owner()}
    })));
}

// Nothing stops at the first failure: what comes later is still read, and raises as ever.
TEST_F(ContentItem, ReadsWhatComesAfterAKeyThatFails) {
    EXPECT_EQ(Tests::nameOfException([] {
                  (void)build(*NS::Dictionary::dictionaryWithEntries({
                      {"Size", NS::make<NS::Array>()}
                  }));
              }),
              NS::kInvalidArgumentException);
}

TEST_F(ContentItem, HasADefaultForAKeyThatIsConverted) {
    const auto item = build(*NS::Dictionary::dictionaryWithEntries({
        {"Title", NS::str("Docs")},
        {"Owner", owner()        }
    }));
    ASSERT_TRUE(item);
    EXPECT_EQ(text(item->size()), "0");
}

TEST_F(ContentItem, TakesNullForAValueThatIsThere) {
    const auto item = build(*NS::Dictionary::dictionaryWithEntries({
        {"Title", NS::Null::null()},
        {"Owner", owner()         }
    }));
    ASSERT_TRUE(item);
    EXPECT_EQ(item->title(), NS::Null::null());
}

TEST_F(ContentItem, OfAClassWithoutTableIsBuiltFromAnything) {
    const auto empty = NS::make<NS::Dictionary>();
    const auto item =
        QVContentItem::itemWithDict_error(QVContentItem::kContentClass, *empty, nullptr);
    ASSERT_TRUE(item);
    EXPECT_FALSE(item->identifier());
    const auto reply = NS::Dictionary::dictionaryWithEntries({
        {"identifier", NS::str("x")}
    });
    const auto synched =
        QVContentItem::itemWithDict_error(QVSynchedItem::kContentClass, *reply, nullptr);
    EXPECT_FALSE(NS::as<QVSynchedItem>(NS::RefPtr<NS::Object>(synched))->identifier());
}

TEST_F(ContentItem, InheritsTableAndConversions) {
    const auto item =
        build(*NS::Dictionary::dictionaryWithEntries({
                  {"Title", NS::str("Docs")},
                  {"Size",  NS::str("7")   },
                  {"Owner", owner()        }
    }),
              DerivedItem::kContentClass);
    ASSERT_TRUE(NS::as<DerivedItem>(NS::RefPtr<NS::Object>(item)));
    EXPECT_EQ(text(item->size()), "7");
}

TEST_F(ContentItem, LeavesTheErrorLocationAsItWas) {
    NS::RefPtr<NS::Error> error = NS::make<NS::Error>(NS::str("Earlier"), 1);
    const auto before = error;
    const auto empty = NS::make<NS::Dictionary>();
    EXPECT_FALSE(QVContentItem::itemWithDict_error(SampleItem::kContentClass, *empty, &error));
    EXPECT_EQ(error, before);
}

TEST_F(ContentItem, TellsItsTables) {
    EXPECT_EQ(QVContentItem::mappingDict(QVContentItem::kContentClass)->count(), 0U);
    EXPECT_EQ(QVContentItem::encodeArray(QVContentItem::kContentClass)->count(), 0U);
    const auto mapping = QVContentItem::mappingDict(DerivedItem::kContentClass);
    EXPECT_EQ(mapping->count(), 3U);
    EXPECT_EQ(text(mapping->objectForKey("owner")), "Owner.Name");
    EXPECT_EQ(text(QVContentItem::encodeArray(SampleItem::kContentClass)),
              "(\n    title,\n    size,\n    marked\n)");
    EXPECT_EQ(text(QVContentItem::encodeArray(DerivedItem::kContentClass)),
              "(\n    title,\n    size,\n    marked,\n    extra\n)");
    EXPECT_EQ(text(QVContentItem::encodeArray(QVSynchedItem::kContentClass)),
              "(\n    dateModified\n)");
}

TEST_F(ContentItem, PassesEveryValueThroughByTheRootsConversion) {
    const auto value = NS::str("x");
    EXPECT_EQ(
        QVContentItem::parseValue_forKey_error(QVSynchedItem::kContentClass, value, "any", nullptr),
        value);
    EXPECT_FALSE(QVContentItem::parseValue_forKey_error(QVContentItem::kContentClass, nullptr,
                                                        "any", nullptr));
}

TEST_F(ContentItem, IsArchivedByItsList) {
    const auto item = NS::make<SampleItem>();
    item->setTimeReceived(1.5);
    item->setTitle(NS::str("Docs"));
    const std::string list =
        Tests::textOfList(*NS::KeyedArchiver::archivedDataWithRootObject(item));
    EXPECT_NE(list.find("{$class=#2, timeReceived=1.5, title=#3, size=#0, marked=#4}, "
                        "{$classname=\"SampleItem\", $classes=[\"SampleItem\", "
                        "\"QVContentItem\", \"NSObject\"]}, \"Docs\", false"),
              std::string::npos)
        << list;
}

TEST_F(ContentItem, ComesBackWithWhatItsListNames) {
    const auto item = NS::make<DerivedItem>();
    item->setTimeReceived(12.25);
    item->setTitle(NS::str("Docs"));
    item->setSize(NS::Number::numberWithInt(3));
    item->setMarked(true);
    item->setExtra(NS::str("more"));
    const auto back = restored(item);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->timeReceived(), 12.25);
    EXPECT_EQ(text(back->title()), "Docs");
    EXPECT_EQ(text(back->size()), "3");
    EXPECT_TRUE(back->marked());
    EXPECT_EQ(text(back->extra()), "more");
}

TEST_F(ContentItem, ComesBackWithoutItsInitialisersValues) {
    const auto item = NS::make<SampleItem>();
    item->setOwner(NS::str("not archived"));
    const auto back = restored(item);
    EXPECT_FALSE(back->identifier());
    EXPECT_FALSE(back->owner());
    EXPECT_EQ(back->timeReceived(), 0);
}

TEST_F(ContentItem, ComesBackAsOneWhereItWasOne) {
    const auto item = NS::make<SampleItem>();
    const auto other = NS::make<SampleItem>();
    item->setTitle(NS::str("shared"));
    other->setValue_forKey(item->title(), NS::str("title"));
    const auto list = NS::Array::arrayWithObjects({item, other, item});
    const auto back = restored(list);
    EXPECT_EQ(back->objectAtIndex(0), back->objectAtIndex(2));
    EXPECT_EQ(back->objectAtIndex(0)->valueForKey(NS::str("title")),
              back->objectAtIndex(1)->valueForKey(NS::str("title")));
}

TEST_F(ContentItem, ComesBackWithNilForKeysThatTheArchiveLacks) {
    Tests::HandMadeArchive archive;
    const auto root = archive.addRecord(archive.addClass("QVSynchedItem"), {});
    const auto back =
        NS::as<QVSynchedItem>(NS::KeyedUnarchiver::unarchiveObjectWithData(*archive.data(root)));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->timeReceived(), 0);
    EXPECT_FALSE(back->dateModified());
}

TEST_F(ContentItem, RaisesWhenTheArchiveLacksAScalar) {
    Tests::HandMadeArchive archive;
    const auto root = archive.addRecord(archive.addClass("SampleItem"), {});
    EXPECT_EQ(Tests::nameOfException(
                  [&] { NS::KeyedUnarchiver::unarchiveObjectWithData(*archive.data(root)); }),
              NS::kInvalidArgumentException);
}

TEST_F(ContentItem, EqualsAnItemWithTheVerySameIdentifier) {
    const auto item = NS::make<SampleItem>();
    const auto other = NS::make<QVContentItem>();
    const auto identifier = NS::str("id");
    item->setIdentifier(identifier);
    other->setIdentifier(identifier);
    EXPECT_TRUE(item->isEqualTo(other.get()));
    EXPECT_FALSE(item->isEqual(other.get()));
}

// The rule is identity, although it looks like a mistake for equal texts.
TEST_F(ContentItem, DiffersForAnEqualIdentifierThatIsAnotherObject) {
    const auto item = NS::make<QVContentItem>();
    const auto other = NS::make<QVContentItem>();
    item->setIdentifier(NS::str("id"));
    other->setIdentifier(NS::str("id"));
    EXPECT_FALSE(item->isEqualTo(other.get()));
}

TEST_F(ContentItem, EqualsAnItemWhenNeitherHasAnIdentifier) {
    EXPECT_TRUE(NS::make<QVContentItem>()->isEqualTo(NS::make<QVSynchedItem>().get()));
}

TEST_F(ContentItem, EqualsNothingButItselfAmongOtherObjects) {
    const auto item = NS::make<QVContentItem>();
    EXPECT_TRUE(item->isEqualTo(item.get()));
    EXPECT_FALSE(item->isEqualTo(NS::str("id").get()));
    EXPECT_FALSE(item->isEqualTo(nullptr));
}

TEST_F(ContentItem, DescribesItselfByClassAndAddress) {
    const auto item = NS::make<QVContentItem>();
    EXPECT_TRUE(item->description()->utf8().starts_with("<QVContentItem: 0x"));
}

TEST_F(ContentItem, CanBeReadWhileAnotherThreadSetsIt) {
    const auto item = NS::make<QVContentItem>();
    item->setIdentifier(NS::str("0"));
    std::thread writer([&] {
        for (int i = 0; i < 5000; ++i) {
            item->setIdentifier(NS::str(std::to_string(i)));
            item->setTimeReceived(i);
        }
    });
    std::size_t characters = 0;
    for (int i = 0; i < 5000; ++i) {
        characters += text(item->identifier()).size();
    }
    writer.join();
    EXPECT_GE(characters, 5000U);
    EXPECT_EQ(item->timeReceived(), 4999);
}

TEST_F(ContentItem, IsArchivedWithOneObjectWhereTwoPropertiesHaveOne) {
    const auto item = NS::make<SampleItem>();
    const auto value = NS::str("value");
    item->setTitle(value);
    item->setValue_forKey(value, *NS::str("size"));
    const auto back = Tests::restored(item);
    EXPECT_EQ(back->title(), back->size());
    EXPECT_EQ(text(back->title()), "value");
}

// A scalar lets go of the object that it is read from, which another property may have as well.
TEST_F(ContentItem, IsRestoredWhereAScalarAndAPropertyShareAValue) {
    Tests::HandMadeArchive archive;
    const auto itsClass = archive.addClass("SampleItem");
    const auto shared = archive.uid(archive.add(archive.list.addBool(true)));
    const auto first = archive.addRecord(itsClass, {
                                                       {"marked", shared}
    });
    const auto second = archive.addRecord(itsClass, {
                                                        {"title",  shared},
                                                        {"marked", shared}
    });
    const auto list = archive.addCollection(archive.addClass("NSArray"), {first, second});
    const auto back =
        NS::cast<NS::Array>(NS::KeyedUnarchiver::unarchiveObjectWithData(*archive.data(list)));
    const auto last = NS::cast<SampleItem>(back->objectAtIndex(1));
    EXPECT_TRUE(last->marked());
    EXPECT_EQ(text(last->title()), "1");
}

TEST_F(ContentItem, CanBeArchivedWhileAnotherThreadSetsIt) {
    const auto item = NS::make<SampleItem>();
    item->setTitle(NS::str("0"));
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            item->setTitle(NS::str(std::to_string(i % 10)));
            item->setSize(NS::Number::numberWithInt(i));
        }
    });
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(text(Tests::restored(item)->title()).size(), 1U);
    }
    writer.join();
    EXPECT_EQ(text(Tests::restored(item)->size()), "1999");
}

} // namespace
