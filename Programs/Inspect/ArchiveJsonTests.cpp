#include "Programs/Inspect/ArchiveJson.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/HandMadeArchive.h"
#include "Platform/Foundation/Testing/HandWrittenList.h"
#include "Platform/Foundation/Testing/ListXML.h"
#include "Platform/Foundation/URL.h"
#include "Programs/Inspect/InspectionError.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using HandMade = Tests::HandMadeArchive;

class ArchiveJson : public testing::Test {
  protected:
    // What is printed, on one line; or what is wrong.
    static std::string json(const NS::Data& data) {
        std::ostringstream out;
        try {
            Inspection::printArchive(data.bytes(), out);
        } catch (const Inspection::Error& error) {
            EXPECT_EQ(out.str(), ""); // no half of a value
            return error.what();
        }
        return nlohmann::ordered_json::parse(out.str()).dump();
    }
    static std::string json(const NS::RefPtr<NS::Object>& root) {
        return json(*NS::KeyedArchiver::archivedDataWithRootObject(root));
    }
    std::string json(HandMade::Uid root) { return json(*archive.data(root)); }
    HandMade::Uid addText(std::string_view text) {
        return archive.add(archive.list.addAscii(text));
    }

    HandMade archive;
};

TEST_F(ArchiveJson, ShowsPlainValues) {
    const auto values = NS::Array::arrayWithObjects(
        {NS::str("caf\xC3\xA9"), NS::make<NS::MutableString>(*NS::str("$null")), NS::str("$null"),
         NS::Number::numberWithBool(true), NS::Number::numberWithLongLong(-1),
         NS::Number::numberWithUnsignedLongLong(~std::uint64_t{0}), NS::Number::numberWithDouble(2),
         NS::Null::null(), NS::Data::dataWithBytes(NS::bytesOf("\xFF")),
         NS::make<NS::MutableData>(NS::bytesOf("m")), NS::make<NS::Date>(0.5)});
    EXPECT_EQ(json(values),
              "[\"caf\xC3\xA9\",\"$null\",\"$null\",true,-1,18446744073709551615,2.0,null,"
              R"({"$data":"/w=="},{"$data":"bQ=="},{"$date":"2001-01-01T00:00:00.5Z"}])");
}

TEST_F(ArchiveJson, ShowsTextsAndNumbersThatJsonDoesNotHold) {
    const auto values = NS::Array::arrayWithObjects({
        NS::String::fromFileSystemRepresentation("/a b\xFF"),
        NS::String::fromUtf16(u"a\xD800"),
        NS::String::fromUtf16(u"\xDCC3\xDCA9"), // as bytes, it would be another text
        NS::Number::numberWithDouble(-std::numeric_limits<double>::infinity()),
        NS::make<NS::Date>(1e300),
        NS::make<NS::Date>(std::numeric_limits<double>::quiet_NaN()),
    });
    EXPECT_EQ(json(values),
              R"([{"$bytes":"/a%20b%FF"},{"$utf16":"0061d800"},{"$utf16":"dcc3dca9"},)"
              R"({"$real":"-inf"},{"$date":1e+300},{"$date":"nan"}])");
}

TEST_F(ArchiveJson, ShowsNil) {
    EXPECT_EQ(json(NS::RefPtr<NS::Object>()), R"({"$nil":true})");
    EXPECT_EQ(json(addText("$null")), R"({"$nil":true})");
}

TEST_F(ArchiveJson, ShowsARecordOfAnUnknownClass) {
    const auto root = archive.addRecord(archive.addClass("NoSuchClass"),
                                        {
                                            {"one",   archive.uid(addText("1"))                 },
                                            {"none",  archive.uid(0)                            },
                                            {"two",   archive.list.addReal(2)                   },
                                            {"$$odd", archive.list.addBool(true)                },
                                            {"three", archive.uids({addText("3"), addText("4")})}
    });
    EXPECT_EQ(json(root), R"({"$class":"NoSuchClass","one":"1","none":{"$nil":true},"two":2.0,)"
                          R"("$$odd":true,"three":["3","4"]})");
}

TEST_F(ArchiveJson, ShowsURLsAndErrorsAsTheRecordsThatTheyAre) {
    EXPECT_EQ(json(NS::URL::URLWithString(*NS::str("http://host/"))),
              R"({"$class":"NSURL","NS.base":{"$nil":true},"NS.relative":"http://host/"})");
    EXPECT_EQ(json(NS::make<NS::Error>(NS::str("Domain"), -3)),
              R"({"$class":"NSError","NSCode":-3,"NSDomain":"Domain","NSUserInfo":{}})");
}

TEST_F(ArchiveJson, ShowsCollections) {
    const auto dictionary = NS::make<NS::MutableDictionary>();
    dictionary->setObject_forKey(NS::make<NS::Array>(), "a");
    dictionary->setObject_forKey(NS::Set::setWithObject(NS::str("x")), "$ref");
    EXPECT_EQ(json(dictionary), R"({"a":[],"$$ref":{"$set":["x"]}})");
}

TEST_F(ArchiveJson, ShowsPairsWhereKeysAreNoTextsOrStandTwice) {
    const auto dictionary = archive.addClass("NSDictionary");
    const auto number = archive.add(archive.list.addInteger(1));
    const auto text = addText("k");
    EXPECT_EQ(json(archive.addDictionary(dictionary, {text, number}, {number, text})),
              R"({"$dictionary":[["k",1],[1,"k"]]})");
    EXPECT_EQ(json(archive.addDictionary(dictionary, {text, addText("k")}, {number, number})),
              R"({"$dictionary":[["k",1],["k",1]]})");
}

TEST_F(ArchiveJson, CountsRecordsAndCollectionsAsTheyBegin) {
    const auto record = archive.addClass("Record");
    const auto empty = archive.addCollection(archive.addClass("NSArray"), {});
    const auto leaf = archive.addRecord(record, {
                                                    {"list", archive.uid(empty)}
    });
    const auto root =
        archive.addCollection(archive.addClass("NSArray"), {leaf, addText("t"), empty, leaf});
    EXPECT_EQ(json(root), R"([{"$class":"Record","list":[]},"t",{"$ref":3},{"$ref":2}])");
}

TEST_F(ArchiveJson, ShowsWhatHoldsItself) {
    const auto array = NS::make<NS::MutableArray>();
    array->addObject(array);
    EXPECT_EQ(json(array), R"([{"$ref":1}])");
    array->removeAllObjects();
}

TEST_F(ArchiveJson, ShowsCollectionsThatAreNoneAsRecords) {
    EXPECT_EQ(json(archive.addRecord(archive.addClass("NSArray"),
                                     {
                                         {"NS.objects", archive.list.addBool(true)}
    })),
              R"({"$class":"NSArray","NS.objects":true})");
    EXPECT_EQ(json(archive.addDictionary(archive.addClass("NSDictionary"), {addText("k")}, {})),
              R"({"$class":"NSDictionary","NS.keys":["k"],"NS.objects":[]})");
    EXPECT_EQ(json(archive.addRecord(archive.addClass("NSDate"), {})), R"({"$class":"NSDate"})");
}

TEST_F(ArchiveJson, ShowsAllTopObjectsWhereThereAreOthersThanTheRoot) {
    archive.top = {
        {"other", archive.list.addInteger(7)}
    };
    EXPECT_EQ(json(addText("x")), R"({"$top":{"other":7,"root":"x"}})");
}

TEST_F(ArchiveJson, ShowsTopObjectsWithoutARoot) {
    archive.rootKey = "$0";
    EXPECT_EQ(json(addText("x")), R"({"$top":{"$$0":"x"}})");
}

TEST_F(ArchiveJson, ShowsValuesInPlaceAndBehindUidsAlike) {
    const HandMade::Reference values[] = {archive.list.addAscii("a"), archive.uid(addText("b"))};
    EXPECT_EQ(json(archive.addRecord(archive.addClass("NSArray"),
                                     {
                                         {"NS.objects", archive.list.addArray(values)}
    })),
              R"(["a","b"])");
    const auto time = archive.uid(archive.add(archive.list.addInteger(1)));
    EXPECT_EQ(json(archive.addRecord(archive.addClass("NSDate"),
                                     {
                                         {"NS.time", time}
    })),
              R"({"$date":"2001-01-01T00:00:01Z"})");
}

TEST_F(ArchiveJson, ReadsXML) {
    const auto data = NS::KeyedArchiver::archivedDataWithRootObject(
        NS::Array::arrayWithObjects({NS::str("a<b"), NS::make<NS::Date>(1)}));
    const std::string xml = Tests::ListXML(*data).text();
    EXPECT_EQ(json(*NS::Data::dataWithBytes(NS::bytesOf(xml))),
              R"(["a<b",{"$date":"2001-01-01T00:00:01Z"}])");
    EXPECT_EQ(json(*NS::Data::dataWithBytes(NS::bytesOf("<plist>"))),
              "no keyed archive, or a damaged one: no element found on line 1");
}

TEST_F(ArchiveJson, TakesTheDictionaryOfXMLForAUidInABinaryListToo) {
    const auto uid = archive.dictionary({
        {"CF$UID", archive.list.addInteger(addText("x"))}
    });
    EXPECT_EQ(json(archive.addRecord(archive.addClass("R"),
                                     {
                                         {"a", uid}
    })),
              R"({"$class":"R","a":"x"})");
}

TEST_F(ArchiveJson, SaysWhatIsWrong) {
    const std::string damaged = "no keyed archive, or a damaged one: ";
    EXPECT_EQ(json(9999), damaged + "a UID of an object that is not there");
    const auto itself = archive.uid(static_cast<HandMade::Uid>(archive.entries.size()));
    EXPECT_EQ(json(archive.add(itself)), damaged + "a UID where an object should be");
    const auto empty = archive.add(archive.dictionary({}));
    EXPECT_EQ(json(empty), damaged + "an object has no class");
    EXPECT_EQ(json(archive.addRecord(addText("x"), {})), damaged + "a class is no dictionary");
    EXPECT_EQ(json(archive.addRecord(empty, {})), damaged + "a class has no name");
    archive.version = 100001;
    EXPECT_EQ(json(addText("x")), damaged + "it is of another version of the format");
    archive.archiver = "OtherArchiver";
    EXPECT_EQ(json(addText("x")), damaged + "it was not made by a keyed archiver");
}

// What is shown is what the unarchiver reads; what it refuses is refused here.
class ArchiveJsonAndTheUnarchiver : public ArchiveJson {
  protected:
    static constexpr std::string_view kDamaged = "no keyed archive, or a damaged one: ";

    void expectShown(HandMade::Uid root, const NS::Object& expected, std::string_view text) {
        const auto data = archive.data(root);
        EXPECT_EQ(json(*data), text);
        const auto read = NS::KeyedUnarchiver::unarchiveObjectWithData(*data);
        EXPECT_TRUE(read && read->isEqual(&expected));
    }
    void expectRefused(HandMade::Uid root, std::string_view reason) {
        expectRefused(*archive.data(root), reason);
    }
    static void expectRefused(const NS::Data& data, std::string_view reason) {
        EXPECT_EQ(json(data), std::string(kDamaged) + std::string(reason));
        EXPECT_THROW(NS::KeyedUnarchiver::unarchiveObjectWithData(data), NS::Exception);
    }
    // The archive of a root, with null in the place of these eight bytes of data.
    NS::Ref<NS::Data> withNullFor(std::string_view bytes, HandMade::Uid root) {
        std::string text(NS::charactersOf(archive.data(root)->bytes()));
        text[text.find('H' + std::string(bytes))] = '\0';
        return NS::Data::dataWithBytes(NS::bytesOf(text));
    }
    HandMade::Uid addArray(HandMade::Reference element) {
        return archive.addRecord(archive.addClass("NSArray"),
                                 {
                                     {"NS.objects", archive.list.addArray({&element, 1})}
        });
    }
    HandMade::Uid addMutableText(HandMade::Reference contents) {
        return archive.addRecord(archive.addClass("NSMutableString"), {
                                                                          {"NS.string", contents}
        });
    }
};

TEST_F(ArchiveJsonAndTheUnarchiver, TakeATextInPlaceForAKey) {
    const auto key = archive.list.addAscii("k");
    const auto value = archive.uid(addText("v"));
    const auto root = archive.addRecord(archive.addClass("NSDictionary"),
                                        {
                                            {"NS.keys",    archive.list.addArray({&key, 1})  },
                                            {"NS.objects", archive.list.addArray({&value, 1})}
    });
    expectShown(root,
                *NS::Dictionary::dictionaryWithEntries({
                    {"k", NS::str("v")}
    }),
                R"({"k":"v"})");
}

TEST_F(ArchiveJsonAndTheUnarchiver, RefuseACollectionInPlaceOfAnElement) {
    expectRefused(addArray(archive.list.addArray({})), "an element that is no object");
    expectRefused(addArray(archive.dictionary({})), "an element that is no object");
}

TEST_F(ArchiveJsonAndTheUnarchiver, RefuseAnEntryThatIsNoObject) {
    constexpr std::string_view kReason = "a list or a null where an object should be";
    const auto list = archive.add(archive.list.addArray({}));
    expectRefused(addArray(archive.uid(list)), kReason);
    const auto null = archive.add(archive.list.addData(NS::bytesOf("NULLNULL")));
    expectRefused(*withNullFor("NULLNULL", addArray(archive.uid(null))), kReason);
}

TEST_F(ArchiveJsonAndTheUnarchiver, ReadTheFirstEntryAsWhatItIs) {
    archive.entries[0] = archive.list.addAscii("first");
    expectShown(0, *NS::str("first"), R"("first")");
    expectShown(addArray(archive.uid(0)), *NS::Array::arrayWithObjects({NS::str("first")}),
                R"(["first"])");
}

TEST_F(ArchiveJsonAndTheUnarchiver, ReadATextThatIsMadeOfAnother) {
    const auto inner = addMutableText(archive.list.addAscii("text"));
    expectShown(addMutableText(archive.uid(addMutableText(archive.uid(inner)))), *NS::str("text"),
                R"("text")");
}

TEST_F(ArchiveJsonAndTheUnarchiver, RefuseATextThatIsMadeOfItself) {
    const auto text = archive.addClass("NSMutableString");
    const auto itself = static_cast<HandMade::Uid>(archive.entries.size());
    expectRefused(archive.addRecord(text,
                                    {
                                        {"NS.string", archive.uid(itself)}
    }),
                  "objects stand too deep within one another");
}

TEST_F(ArchiveJson, StopsWhereObjectsStandTooDeep) {
    const auto array = archive.addClass("NSArray");
    HandMade::Uid nested = archive.addCollection(array, {});
    for (int i = 1; i < 512; ++i) {
        nested = archive.addCollection(array, {nested});
    }
    EXPECT_EQ(json(nested).substr(0, 3), "[[[");
    EXPECT_EQ(json(archive.addCollection(array, {nested})),
              "objects stand too deep within one another");
}

TEST_F(ArchiveJson, ShowsManyReferencesToOneObject) {
    const auto date =
        archive.addRecord(archive.addClass("NSDate"), {
                                                          {"NS.time", archive.list.addReal(0)}
    });
    const std::vector<HandMade::Reference> references(100'000, archive.uid(date));
    const auto root = archive.addRecord(archive.addClass("NSArray"),
                                        {
                                            {"NS.objects", archive.list.addArray(references)}
    });
    EXPECT_EQ(json(root).size(),
              2 + 100'000 * std::string(R"({"$date":"2001-01-01T00:00:00Z"},)").size() - 1);
}

// A megabyte that is referred to from a thousand places.
TEST_F(ArchiveJson, StopsWhereALongTextUnfoldsWithoutEnd) {
    const auto text = archive.uid(addText(std::string(1 << 20, 'x')));
    const std::vector<HandMade::Reference> references(1000, text);
    const auto root = archive.addRecord(archive.addClass("NSArray"),
                                        {
                                            {"NS.objects", archive.list.addArray(references)}
    });
    EXPECT_EQ(json(root), "what it refers to again and again comes to more than 320 MiB");
}

TEST_F(ArchiveJson, StopsWhereCollectionsOverlap) {
    const auto array = archive.addClass("NSArray");
    const auto elements = archive.uids(std::vector<HandMade::Uid>(10'000, addText("one")));
    std::vector<HandMade::Uid> entries;
    for (int i = 0; i < 1000; ++i) {
        entries.push_back(archive.addRecord(array, {
                                                       {"NS.objects", elements}
        }));
    }
    EXPECT_EQ(json(archive.addCollection(array, entries)),
              "no keyed archive, or a damaged one: its collections overlap");
}

TEST_F(ArchiveJson, ShowsOrRefusesADamagedArchive) {
    const auto dictionary = NS::make<NS::MutableDictionary>();
    dictionary->setObject_forKey(NS::make<NS::Date>(1), "date");
    dictionary->setObject_forKey(NS::Set::setWithObject(NS::str("x")), "set");
    dictionary->setObject_forKey(NS::Array::arrayWithObjects({dictionary}), "array");
    const auto data = NS::KeyedArchiver::archivedDataWithRootObject(dictionary);
    dictionary->removeAllObjects();
    const std::string whole(NS::charactersOf(data->bytes()));
    std::size_t refused = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        refused += json(*NS::Data::dataWithBytes(NS::bytesOf(whole.substr(0, at))))
                       .starts_with("no keyed");
        std::string flipped = whole;
        for (unsigned bit = 0; bit < 8; ++bit) {
            flipped[at] = static_cast<char>(static_cast<unsigned char>(whole[at]) ^ (1U << bit));
            EXPECT_NE(json(*NS::Data::dataWithBytes(NS::bytesOf(flipped))), "");
        }
    }
    EXPECT_EQ(refused, whole.size());
}

} // namespace
