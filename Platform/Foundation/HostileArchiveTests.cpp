#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/PropertyList.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/ArchivedRecords.h"
#include "Platform/Foundation/Testing/HandMadeArchive.h"
#include "Platform/Foundation/Testing/HandWrittenList.h"
#include "Platform/Foundation/Testing/ListXML.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "Platform/Foundation/URL.h"
#include "Tests/Support/PeakMemory.h"

#include <gtest/gtest.h>

#include <ctime>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#define WITHOUT_LEAK_CHECK(statement)                                                              \
    __lsan_disable();                                                                              \
    statement;                                                                                     \
    __lsan_enable()
#else
#define WITHOUT_LEAK_CHECK(statement) statement
#endif

namespace {

using NS::as;
using HandMade = Tests::HandMadeArchive;
using Uid = HandMade::Uid;

// Archives that were made to do harm. Whatever they hold, the outcome is a value or one of the
// platform's exceptions, soon and without much memory.
class HostileArchive : public testing::Test {
  protected:
    static NS::RefPtr<NS::Object> unarchive(const NS::Data& data) {
        return NS::KeyedUnarchiver::unarchiveObjectWithData(data);
    }
    std::string outcome(Uid root) {
        const auto data = archive.data(root);
        const std::clock_t start = std::clock();
        const std::string name = Tests::nameOfException([&] { unarchive(*data); });
        // Of processor time, under a sanitiser too; a work without bounds takes hours.
        EXPECT_LT(std::clock() - start, 60 * CLOCKS_PER_SEC);
        return name;
    }
    Uid nextUid() const { return static_cast<Uid>(archive.entries.size()); }
    Uid addText(std::string_view text) { return archive.add(archive.list.addAscii(text)); }

    HandMade archive;
};

TEST_F(HostileArchive, AMillionReferencesToOneObjectAreOneObject) {
    const auto text = archive.uid(addText("one"));
    const std::vector<HandMade::Reference> references(1'000'000, text);
    const auto root = archive.addRecord(archive.addClass("NSArray"),
                                        {
                                            {"NS.objects", archive.list.addArray(references)}
    });
    const auto array = as<NS::Array>(unarchive(*archive.data(root)));
    EXPECT_EQ(array->count(), 1'000'000U);
    EXPECT_EQ(array->objectAtIndex(0), array->objectAtIndex(999'999));
}

TEST_F(HostileArchive, AMillionReferencesToOneObjectAreOneMemberOfASet) {
    const auto text = archive.uid(addText("one"));
    const std::vector<HandMade::Reference> references(1'000'000, text);
    const auto root = archive.addRecord(archive.addClass("NSSet"),
                                        {
                                            {"NS.objects", archive.list.addArray(references)}
    });
    EXPECT_EQ(as<NS::Set>(unarchive(*archive.data(root)))->count(), 1U);
}

// As writers that write equal lists once make them: twice as many elements as bytes.
TEST_F(HostileArchive, RecordsThatShareAListAreRead) {
    const auto set = archive.addClass("NSSet");
    std::vector<Uid> texts;
    for (int i = 0; i < 100; ++i) {
        texts.push_back(addText(std::to_string(i)));
    }
    const auto elements = archive.uids(texts);
    std::vector<Uid> entries;
    for (int i = 0; i < 1000; ++i) {
        entries.push_back(archive.addRecord(set, {
                                                     {"NS.objects", elements}
        }));
    }
    const auto data = archive.data(archive.addCollection(archive.addClass("NSArray"), entries));
    EXPECT_LT(data->length(), 50'000U);
    const auto root = as<NS::Array>(unarchive(*data));
    EXPECT_EQ(as<NS::Set>(NS::RefPtr<NS::Object>(root->objectAtIndex(999)))->count(), 100U);
}

// Ten thousand collections that share a list of ten thousand elements would be a hundred million.
TEST_F(HostileArchive, CollectionsThatShareTheirListAreRefused) {
    const auto array = archive.addClass("NSArray");
    const auto elements = archive.uids(std::vector<Uid>(10000, addText("one")));
    const auto shared = archive.dictionary({
        {"NS.objects", elements          },
        {"$class",     archive.uid(array)}
    });
    std::vector<Uid> entries;
    for (int i = 0; i < 10000; ++i) {
        entries.push_back(archive.add(shared));
    }
    EXPECT_EQ(outcome(archive.addCollection(array, entries)), NS::kInvalidArgumentException);
}

// The texts of a list that other writers share come to be one object before they come to be more
// than the archive.
TEST_F(HostileArchive, ALongTextThatManyEntriesShareIsNotCopiedForAll) {
    const auto text = archive.list.addAscii(std::string(100'000, 'x'));
    std::vector<Uid> entries;
    for (int i = 0; i < 10000; ++i) {
        entries.push_back(archive.add(text));
    }
    const auto root = archive.addCollection(archive.addClass("NSArray"), entries);
    const auto array = as<NS::Array>(unarchive(*archive.data(root)));
    const auto first = as<NS::String>(NS::RefPtr<NS::Object>(array->objectAtIndex(5000)));
    const auto second = as<NS::String>(NS::RefPtr<NS::Object>(array->objectAtIndex(9999)));
    EXPECT_NE(first, second);
    EXPECT_EQ(first->ascii().data(), second->ascii().data());
    EXPECT_TRUE(array->objectAtIndex(0)->isEqual(second.get()));
}

// The hint that is known comes last, for each class anew.
TEST_F(HostileArchive, ClassesThatShareTheirHintsAreRefused) {
    std::vector<HandMade::Reference> names(100'000, archive.list.addAscii("NoSuchHint"));
    names.push_back(archive.list.addAscii("NSNull"));
    const auto hints = archive.list.addArray(names);
    std::vector<Uid> entries;
    for (int i = 0; i < 10'000; ++i) {
        const auto record = archive.add(archive.dictionary({
            {"$classname",  archive.list.addAscii("NoSuchClass")},
            {"$classhints", hints                               }
        }));
        entries.push_back(archive.addRecord(record, {}));
    }
    EXPECT_EQ(outcome(entries.front()), "none");
    EXPECT_EQ(outcome(archive.addCollection(archive.addClass("NSArray"), entries)),
              NS::kInvalidArgumentException);
}

TEST_F(HostileArchive, DeepNestingIsRefused) {
    const auto array = archive.addClass("NSArray");
    std::vector<Uid> none;
    Uid nested = archive.addCollection(array, none);
    for (int i = 1; i < 512; ++i) {
        nested = archive.addCollection(array, {nested});
    }
    EXPECT_EQ(outcome(nested), "none");
    nested = archive.addCollection(array, {nested});
    EXPECT_EQ(outcome(nested), NS::kInvalidArgumentException);
    for (int i = 0; i < 100'000; ++i) {
        nested = archive.addCollection(array, {nested});
    }
    EXPECT_EQ(outcome(nested), NS::kInvalidArgumentException);
}

// Nothing nests while this is decoded, since each array's element is there already; letting go of
// the outermost one would release a hundred thousand from within each other.
TEST_F(HostileArchive, AChainThatComesInFromItsFarEndIsRefused) {
    const auto array = archive.addClass("NSArray");
    std::vector<Uid> chain{archive.addCollection(array, {})};
    for (int i = 0; i < 100'000; ++i) {
        chain.push_back(archive.addCollection(array, {chain.back()}));
    }
    EXPECT_EQ(outcome(archive.addCollection(array, chain)), NS::kInvalidArgumentException);
}

TEST_F(HostileArchive, AChainOfBaseURLsIsRefused) {
    const auto url = archive.addClass("NSURL");
    const auto text = archive.uid(addText("x"));
    std::vector<Uid> chain{
        archive.addRecord(url, {{"NS.relative", text}}
         )
    };
    for (int i = 0; i < 100'000; ++i) {
        chain.push_back(archive.addRecord(
            url, {
                     {"NS.relative", text                     },
                     {"NS.base",     archive.uid(chain.back())}
        }));
    }
    EXPECT_EQ(outcome(archive.addCollection(archive.addClass("NSArray"), chain)),
              NS::kInvalidArgumentException);
}

TEST_F(HostileArchive, AURLBasedOnItselfIsRefused) {
    const auto url = archive.addClass("NSURL");
    const auto text = archive.uid(addText("x"));
    const auto root =
        archive.addRecord(url, {
                                   {"NS.relative", text                  },
                                   {"NS.base",     archive.uid(nextUid())}
    });
    EXPECT_NE(outcome(root), "none");
}

TEST_F(HostileArchive, ASetOfManyArraysIsRead) {
    const auto array = archive.addClass("NSArray");
    std::vector<Uid> members;
    for (int i = 0; i < 100'000; ++i) {
        members.push_back(archive.addCollection(array, {addText(std::to_string(i))}));
    }
    const auto root = archive.addCollection(archive.addClass("NSSet"), members);
    const auto set = as<NS::Set>(unarchive(*archive.data(root)));
    EXPECT_EQ(set->count(), 100'000U);
    EXPECT_TRUE(set->containsObject(*NS::Array::arrayWithObjects({NS::str("99999")})));
}

TEST_F(HostileArchive, ManyKeysThatShareALongListAreRead) {
    const auto array = archive.addClass("NSArray");
    std::vector<Uid> texts;
    for (int i = 0; i < 1000; ++i) {
        texts.push_back(addText(std::to_string(i)));
    }
    const auto shared = archive.addCollection(array, texts);
    std::vector<Uid> keys;
    for (int i = 0; i < 1000; ++i) {
        keys.push_back(archive.addCollection(array, {texts[static_cast<std::size_t>(i)], shared}));
    }
    const auto root = archive.addDictionary(archive.addClass("NSDictionary"), keys, keys);
    EXPECT_EQ(as<NS::Dictionary>(unarchive(*archive.data(root)))->count(), 1000U);
}

// They differ further down than a hash looks, so that each is compared with all before it.
TEST_F(HostileArchive, ASetOfManyArraysThatCollideIsRefused) {
    const auto array = archive.addClass("NSArray");
    std::vector<Uid> members;
    for (int i = 0; i < 3000; ++i) {
        Uid member = addText(std::to_string(i));
        for (int depth = 0; depth < 30; ++depth) {
            member = archive.addCollection(array, {member});
        }
        members.push_back(member);
    }
    EXPECT_EQ(outcome(archive.addCollection(archive.addClass("NSSet"), members)),
              NS::kInvalidUnarchiveOperationException);
    EXPECT_EQ(outcome(archive.addDictionary(archive.addClass("NSDictionary"), members, members)),
              NS::kInvalidUnarchiveOperationException);
}

// The members are complete before the array that they refer to is.
TEST_F(HostileArchive, MembersThatReferToWhatTheirSetStandsInAreFound) {
    const auto outer = NS::make<NS::MutableArray>();
    std::vector<NS::Ref<NS::Object>> members;
    for (int i = 0; i < 20; ++i) {
        members.push_back(NS::Array::arrayWithObjects({NS::Number::numberWithInt(i), outer}));
    }
    outer->addObject(NS::make<NS::Set>(members));
    outer->addObject(
        NS::make<NS::Dictionary>(std::vector<NS::Dictionary::Entry>(1, {members[0], members[1]})));
    const auto archived = NS::KeyedArchiver::archivedDataWithRootObject(outer);
    outer->removeAllObjects();
    const auto root = as<NS::MutableArray>(unarchive(*archived));
    const auto set = as<NS::Set>(NS::RefPtr<NS::Object>(root->objectAtIndex(0)));
    EXPECT_EQ(set->count(), 20U);
    for (const auto& member : *set) {
        EXPECT_TRUE(set->containsObject(*member));
    }
    root->removeAllObjects();
}

// Each level holds the one below twice: comparing two of them visits two to the fortieth texts.
TEST_F(HostileArchive, KeysThatUnfoldWithoutEndAreRefused) {
    const auto array = archive.addClass("NSArray");
    std::vector<Uid> keys;
    for (int twice = 0; twice < 2; ++twice) {
        Uid level = addText("leaf");
        for (int i = 0; i < 40; ++i) {
            level = archive.addCollection(array, {level, level});
        }
        keys.push_back(level);
    }
    EXPECT_EQ(outcome(archive.addDictionary(archive.addClass("NSDictionary"), keys, keys)),
              NS::kInvalidUnarchiveOperationException);
}

// Each key is short in the archive, and each hash reads a hundred thousand characters.
TEST_F(HostileArchive, KeysThatShareALongTextAreRefused) {
    const auto text = archive.list.addAscii(std::string(200'000, 'x'));
    std::vector<Uid> keys;
    for (int i = 0; i < 20; ++i) {
        keys.push_back(addText(std::to_string(i)));
    }
    for (int i = 0; i < 30'000; ++i) {
        keys.push_back(archive.add(text));
    }
    EXPECT_EQ(outcome(archive.addDictionary(archive.addClass("NSDictionary"), keys, keys)),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(HostileArchive, ADictionaryOfManyKeysIsRead) {
    std::vector<Uid> keys;
    for (int i = 0; i < 100'000; ++i) {
        keys.push_back(addText("key " + std::to_string(i)));
    }
    const auto root = archive.addDictionary(archive.addClass("NSDictionary"), keys, keys);
    EXPECT_EQ(as<NS::Dictionary>(unarchive(*archive.data(root)))->count(), 100'000U);
}

TEST_F(HostileArchive, ACollectionAmongItsOwnKeysIsRefused) {
    const auto set = archive.addClass("NSSet");
    EXPECT_EQ(outcome(archive.addCollection(set, {nextUid()})),
              NS::kInvalidUnarchiveOperationException);
    const auto dictionary = archive.addClass("NSDictionary");
    EXPECT_EQ(outcome(archive.addDictionary(dictionary, {nextUid()}, {nextUid()})),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(HostileArchive, RecordsThatShareAHugeDictionaryAreRefused) {
    const int before = Tests::ArchivedRecord::living;
    const auto record = archive.addClass("ArchivedRecord");
    HandMade::Members members{
        {"$class", archive.uid(record)}
    };
    std::vector<HandMade::Reference> keys(100'000, archive.list.addAscii("key"));
    std::vector<HandMade::Reference> values(100'000, archive.list.addBool(true));
    keys.push_back(archive.list.addAscii("$class"));
    values.push_back(archive.uid(record));
    const auto shared = archive.list.addDictionary(keys, values);
    std::vector<Uid> entries;
    for (int i = 0; i < 10'000; ++i) {
        entries.push_back(archive.add(shared));
    }
    EXPECT_EQ(outcome(archive.addCollection(archive.addClass("NSArray"), entries)),
              NS::kInvalidArgumentException);
    EXPECT_EQ(Tests::ArchivedRecord::living, before);
}

TEST_F(HostileArchive, ClassesThatShareAHugeDictionaryAreRefused) {
    std::vector<HandMade::Reference> keys(100'000, archive.list.addAscii("key"));
    keys.push_back(archive.list.addAscii("$classname"));
    const std::vector<HandMade::Reference> values(keys.size(), archive.list.addAscii("NSArray"));
    const auto shared = archive.list.addDictionary(keys, values);
    std::vector<Uid> entries;
    for (int i = 0; i < 10'000; ++i) {
        entries.push_back(archive.addCollection(archive.add(shared), {}));
    }
    EXPECT_EQ(outcome(archive.addCollection(archive.addClass("NSArray"), entries)),
              NS::kInvalidArgumentException);
}

TEST_F(HostileArchive, TextsThatOverlapAreRefused) {
    Tests::HandWrittenList list;
    list.offsetWidth = 4;
    list.referenceWidth = 2;
    // A text of 24,672 characters begins at each fourth place.
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += "\x5F\x11\x60\x60";
    }
    list.add(text + std::string(30'000, 'x'));
    list.offsets.pop_back();
    std::string elements("\xAF\x11\x03\xE8", 4);
    for (std::uint64_t i = 0; i < 1000; ++i) {
        list.offsets.push_back(8 + 4 * i);
        elements += list.reference(i);
    }
    list.top = list.add(elements);
    NS::RefPtr<NS::String> reason;
    EXPECT_FALSE(NS::propertyListWithData(*list.data(), reason));
    EXPECT_EQ(reason->utf8(), "texts or data that overlap");
}

// In XML each reference takes fifty characters; what comes of them is a list of one object.
TEST_F(HostileArchive, AMillionReferencesInXMLAreOneObject) {
    constexpr std::string_view kUid = "<dict><key>CF$UID</key><integer>1</integer></dict>";
    std::string xml =
        "<plist><dict><key>$version</key><integer>100000</integer><key>$archiver</key>"
        "<string>NSKeyedArchiver</string><key>$top</key><dict><key>root</key><dict>"
        "<key>CF$UID</key><integer>2</integer></dict></dict><key>$objects</key>"
        "<array><string>$null</string><string>one</string><dict><key>$class</key>"
        "<dict><key>CF$UID</key><integer>3</integer></dict><key>NS.objects</key><array>";
    for (int i = 0; i < 1'000'000; ++i) {
        xml += kUid;
    }
    xml +=
        "</array></dict><dict><key>$classname</key><string>NSArray</string></dict></array></dict>"
        "</plist>";
    const auto array = as<NS::Array>(unarchive(*NS::Data::dataWithBytes(NS::bytesOf(xml))));
    ASSERT_EQ(array->count(), 1'000'000U);
    EXPECT_EQ(array->objectAtIndex(0), array->objectAtIndex(999'999));
}

// Memory in proportion to the archive, whatever it unfolds to. The factor has room for what the
// sanitisers add; the thread sanitiser keeps several bytes for each byte that is touched.
class HungryArchive : public HostileArchive {
  protected:
#if defined(__SANITIZE_THREAD__)
    static constexpr std::size_t kFactor = 100;
#else
    static constexpr std::size_t kFactor = 12;
#endif
    static constexpr std::size_t kAtLeast = std::size_t{64} << 20U;

    static void expectInProportion(const NS::Data& data) {
        const std::size_t peak =
            Tests::peakMemoryOf([&] { (void)Tests::nameOfException([&] { unarchive(data); }); });
        EXPECT_LT(peak, kAtLeast + kFactor * data.length()) << "for " << data.length();
    }
};

TEST_F(HungryArchive, OfAMillionReferencesToOneObject) {
    const std::vector<HandMade::Reference> references(1'000'000, archive.uid(addText("one")));
    const auto root = archive.addRecord(archive.addClass("NSArray"),
                                        {
                                            {"NS.objects", archive.list.addArray(references)}
    });
    const auto data = archive.data(root);
    expectInProportion(*data);
    expectInProportion(*NS::Data::dataWithBytes(NS::bytesOf(Tests::ListXML(*data).text())));
}

TEST_F(HungryArchive, OfAMillionNumbers) {
    std::vector<Uid> numbers;
    for (int i = 0; i < 1'000'000; ++i) {
        numbers.push_back(archive.add(archive.list.addInteger(i)));
    }
    expectInProportion(*archive.data(archive.addCollection(archive.addClass("NSArray"), numbers)));
}

TEST_F(HungryArchive, OfSetsThatShareTheirList) {
    std::vector<Uid> texts;
    for (int i = 0; i < 600; ++i) {
        texts.push_back(addText(std::to_string(i)));
    }
    const auto set = archive.addClass("NSSet");
    const auto elements = archive.uids(texts);
    std::vector<Uid> entries;
    for (int i = 0; i < 800; ++i) {
        entries.push_back(archive.addRecord(set, {
                                                     {"NS.objects", elements}
        }));
    }
    const Uid root = archive.addCollection(archive.addClass("NSArray"), entries);
    EXPECT_EQ(outcome(root), "none");
    expectInProportion(*archive.data(root));
}

TEST_F(HungryArchive, OfTextsThatShareTheirBytes) {
    const auto text = archive.list.addAscii(std::string(1'000'000, 'x'));
    std::vector<Uid> entries;
    for (int i = 0; i < 10'000; ++i) {
        entries.push_back(archive.add(text));
    }
    expectInProportion(*archive.data(archive.addCollection(archive.addClass("NSArray"), entries)));
}

// In place or behind a UID, as texts, mutable texts and data have theirs.
TEST_F(HungryArchive, OfRecordsThatShareTheirContents) {
    const std::string contents(1'000'000, 'x');
    const auto text = archive.list.addAscii(contents);
    const auto data = archive.list.addData(NS::bytesOf(contents));
    const std::tuple<const char*, const char*, HandMade::Reference> rows[] = {
        {"NSMutableString", "NS.string", text                          },
        {"NSMutableString", "NS.string", archive.uid(archive.add(text))},
        {"NSMutableString", "NS.bytes",  data                          },
        {"NSString",        "NS.bytes",  archive.uid(archive.add(data))},
        {"NSMutableData",   "NS.data",   data                          },
        {"NSData",          "NS.bytes",  archive.uid(archive.add(data))},
    };
    for (const auto& [name, key, value] : rows) {
        const auto record = archive.addClass(name);
        std::vector<Uid> entries;
        for (int i = 0; i < 3000; ++i) {
            entries.push_back(archive.addRecord(record, {
                                                            {key, value}
            }));
        }
        const Uid root = archive.addCollection(archive.addClass("NSArray"), entries);
        EXPECT_EQ(outcome(root), "none") << name << ' ' << key;
        expectInProportion(*archive.data(root));
    }
}

// Each of them is three bytes of a list.
TEST_F(HungryArchive, OfAMillionValuesInPlace) {
    const std::vector<HandMade::Reference> flags(3'000'000, archive.list.addInteger(7));
    expectInProportion(*archive.data(archive.addRecord(
        archive.addClass("NSArray"), {
                                         {"NS.objects", archive.list.addArray(flags)}
    })));
    std::vector<HandMade::Reference> numbers;
    for (int i = 0; i < 1'000'000; ++i) {
        numbers.push_back(archive.list.addInteger(i));
    }
    expectInProportion(*archive.data(archive.addRecord(
        archive.addClass("NSArray"), {
                                         {"NS.objects", archive.list.addArray(numbers)}
    })));
}

TEST_F(HungryArchive, OfXMLThatIsAllTags) {
    std::string xml = "<plist><array>";
    for (int i = 0; i < 1'000'000; ++i) {
        xml += "<true/>";
    }
    const auto data = NS::Data::dataWithBytes(NS::bytesOf(xml + "</array></plist>"));
    expectInProportion(*data);
    NS::RefPtr<NS::String> reason;
    const std::size_t peak =
        Tests::peakMemoryOf([&] { EXPECT_TRUE(NS::propertyListWithData(*data, reason)); });
    EXPECT_LT(peak, kAtLeast + kFactor * data->length());
}

// A small archive of everything, to be damaged.
NS::Ref<NS::Data> sampleArchive() {
    const auto shared = NS::str("shared");
    const auto record = NS::make<Tests::ArchivedRecord>();
    record->setFirst(shared);
    record->setSecond(NS::Number::numberWithLongLong(-2));
    const auto nested = NS::Array::arrayWithObjects(
        {shared, NS::str("caf\xC3\xA9"), NS::Number::numberWithDouble(1.5), NS::Null::null(),
         NS::make<NS::Date>(1), NS::Data::dataWithBytes(NS::bytesOf("data")), record,
         NS::make<NS::MutableString>(*shared), NS::make<NS::MutableData>(NS::bytesOf("d")),
         NS::make<NS::Error>(NS::str("Domain"), 1),
         NS::Ref<NS::Object>(*NS::URL::URLWithString(*NS::str("http://host/"))),
         NS::Set::setWithObject(shared)});
    const auto root = NS::make<NS::MutableDictionary>();
    root->setObject_forKey(nested, "nested");
    root->setObject_forKey(record, "record");
    return NS::KeyedArchiver::archivedDataWithRootObject(root);
}

// A damaged archive may be read as objects that hold each other, which nobody takes apart: only
// one that is refused must leave nothing behind.
void decodeDamaged(std::string_view bytes) {
    const auto data = NS::Data::dataWithBytes(NS::bytesOf(bytes));
    std::string name;
    WITHOUT_LEAK_CHECK(name = Tests::nameOfException(
                           [&] { NS::KeyedUnarchiver::unarchiveObjectWithData(*data); }));
    if (name != "none") {
        EXPECT_TRUE(name == NS::kInvalidArgumentException ||
                    name == NS::kInvalidUnarchiveOperationException)
            << name;
        EXPECT_EQ(
            Tests::nameOfException([&] { NS::KeyedUnarchiver::unarchiveObjectWithData(*data); }),
            name);
    }
    NS::RefPtr<NS::String> reason;
    EXPECT_TRUE(NS::propertyListWithData(*data, reason) || reason);
}

// Collections and a record that hold each other, and a text of which no other reader could tell
// what it is.
NS::Ref<NS::Data> circularArchive() {
    const auto record = NS::make<Tests::ArchivedRecord>();
    const auto array =
        NS::Array::arrayWithObjects({record, NS::String::fromUtf16(u"\xD800"), record});
    record->setFirst(array);
    auto archive = NS::KeyedArchiver::archivedDataWithRootObject(record);
    record->setFirst(nullptr);
    return archive;
}

// The same without the text, which XML does not hold.
NS::Ref<NS::Data> circularArchiveOfPlainTexts() {
    const auto record = NS::make<Tests::ArchivedRecord>();
    record->setFirst(NS::Array::arrayWithObjects({record, NS::str("<caf\xC3\xA9>")}));
    record->setSecond(NS::make<NS::MutableData>(NS::bytesOf("data")));
    auto archive = NS::KeyedArchiver::archivedDataWithRootObject(record);
    record->setFirst(nullptr);
    return archive;
}

// More objects than one byte tells apart.
NS::Ref<NS::Data> wideArchive() {
    std::vector<NS::Ref<NS::Object>> flags;
    for (int i = 0; i < 130; ++i) {
        flags.emplace_back(NS::Number::numberWithInt(i));
    }
    return NS::KeyedArchiver::archivedDataWithRootObject(NS::make<NS::Array>(std::move(flags)));
}

std::vector<std::string> samples() {
    std::vector<std::string> all{Tests::ListXML(*sampleArchive()).text()};
    for (const auto& archive : {sampleArchive(), circularArchive(), wideArchive()}) {
        all.emplace_back(NS::charactersOf(archive->bytes()));
    }
    return all;
}

TEST(DamagedArchive, IsReadWhenItIsNot) {
    for (const std::string& whole : samples()) {
        const auto data = NS::Data::dataWithBytes(NS::bytesOf(whole));
        NS::RefPtr<NS::Object> root;
        WITHOUT_LEAK_CHECK(root = NS::KeyedUnarchiver::unarchiveObjectWithData(*data));
        EXPECT_TRUE(root);
    }
}

TEST(DamagedArchive, IsReadOrRefusedWhereverItIsCutOff) {
    for (const std::string& whole : samples()) {
        for (std::size_t length = 0; length < whole.size(); ++length) {
            decodeDamaged(whole.substr(0, length));
            // The same with the trailer that belongs to the whole.
            decodeDamaged(whole.substr(0, length) + whole.substr(whole.size() - 32));
        }
    }
}

void decodeWithEachBitFlipped(std::string bytes) {
    for (char& byte : bytes) {
        const char before = byte;
        for (unsigned bit = 0; bit < 8; ++bit) {
            byte = static_cast<char>(static_cast<unsigned char>(before) ^ (1U << bit));
            decodeDamaged(bytes);
        }
        byte = static_cast<char>(~static_cast<unsigned char>(before));
        decodeDamaged(bytes);
        byte = before;
    }
}

TEST(DamagedArchive, IsReadOrRefusedWhicheverBitIsFlipped) {
    for (const auto& archive : {sampleArchive(), circularArchive()}) {
        decodeWithEachBitFlipped(std::string(NS::charactersOf(archive->bytes())));
    }
}

TEST(DamagedArchive, IsReadOrRefusedWhicheverBitOfWideOffsetsIsFlipped) {
    decodeWithEachBitFlipped(std::string(NS::charactersOf(wideArchive()->bytes())));
}

TEST(DamagedArchive, IsReadOrRefusedWhicheverBitOfXMLIsFlipped) {
    decodeWithEachBitFlipped(Tests::ListXML(*circularArchiveOfPlainTexts()).text());
}

// The smallest and the largest numbers in each field of the trailer.
TEST(DamagedArchive, IsReadOrRefusedWhateverItsTrailerSays) {
    const auto sample = sampleArchive();
    const std::string whole(NS::charactersOf(sample->bytes()));
    const std::size_t trailer = whole.size() - 32;
    for (std::size_t field = 8; field < 32; field += 8) {
        for (const std::uint64_t value :
             {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{whole.size()},
              std::uint64_t{1} << 31U, std::uint64_t{1} << 32U, std::uint64_t{1} << 61U,
              std::uint64_t{1} << 63U, ~std::uint64_t{0}}) {
            std::string bytes = whole;
            bytes.replace(trailer + field, 8, Tests::HandWrittenList::bigEndian(value, 8));
            decodeDamaged(bytes);
        }
    }
}

} // namespace
