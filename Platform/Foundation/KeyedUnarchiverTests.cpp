#include "Platform/Foundation/KeyedUnarchiver.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/ArchivedRecords.h"
#include "Platform/Foundation/Testing/HandMadeArchive.h"
#include "Platform/Foundation/Testing/HandWrittenList.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "Platform/Foundation/URL.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using NS::as;
using HandMade = Tests::HandMadeArchive;
using Tests::ArchivedRecord;

// A record that is read by its properties.
class PropertyRecord final : public NS::Object {
    NS_OBJECT(PropertyRecord)
  public:
    NS_RECORD_SCALAR(double, time, setTime)
    NS_RECORD_PROPERTY(NS::Object, first, setFirst)
    NS_RECORD_PROPERTY(NS::Object, second, setSecond)

    void initWithCoder(NS::KeyedUnarchiver& coder) override;

    // "time first second"
    std::string text() const {
        const auto part = [](const NS::RefPtr<NS::Object>& value) {
            return value ? value->description()->utf8() : std::string("nil");
        };
        return std::to_string(static_cast<int>(time())) + ' ' + part(first()) + ' ' +
               part(second());
    }
};

constexpr auto kRecordProperties = NS::propertiesOf<PropertyRecord>();

constinit const NS::Class PropertyRecord::kClass{.name = "PropertyRecord",
                                                 .superclass = &NS::Object::kClass,
                                                 .properties = kRecordProperties,
                                                 .createForCoder = []() -> NS::Ref<NS::Object> {
                                                     return NS::make<PropertyRecord>();
                                                 }};
const NS::ClassRegistration kRecordRegistration(PropertyRecord::kClass);

void PropertyRecord::initWithCoder(NS::KeyedUnarchiver& coder) {
    setTime(coder.decodeDoubleOf(kRecordProperties[0]));
    const std::array properties{&kRecordProperties[1], &kRecordProperties[2]};
    coder.decodeProperties_of(properties, *this);
}

class KeyedUnarchiver : public testing::Test {
  protected:
    static NS::RefPtr<NS::Object> unarchive(const NS::Data& data) {
        return NS::KeyedUnarchiver::unarchiveObjectWithData(data);
    }
    static NS::RefPtr<NS::Object> roundTrip(const NS::RefPtr<NS::Object>& root) {
        return unarchive(*NS::KeyedArchiver::archivedDataWithRootObject(root));
    }
    std::string reasonOf(HandMade::Uid root) {
        return Tests::reasonOfException([&] { unarchive(*archive.data(root)); });
    }
    std::string nameOf(HandMade::Uid root) {
        return Tests::nameOfException([&] { unarchive(*archive.data(root)); });
    }

    HandMade archive;
};

TEST_F(KeyedUnarchiver, GivesBackEqualValuesOfTheSameClass) {
    const NS::Ref<NS::Object> values[] = {
        NS::str(""),
        NS::str("text"),
        NS::str("$null"),
        NS::str("caf\xC3\xA9 \xF0\x9F\x98\x80"),
        NS::String::fromFileSystemRepresentation("bad\xFF\xC3"),
        NS::String::fromUtf16(u"\xD800 \xDC00"),
        NS::make<NS::MutableString>(*NS::str("mutable")),
        NS::Number::numberWithBool(false),
        NS::Number::numberWithLongLong(std::numeric_limits<std::int64_t>::min()),
        NS::Number::numberWithLongLong(std::numeric_limits<std::int64_t>::max()),
        NS::Number::numberWithUnsignedLongLong(std::numeric_limits<std::uint64_t>::max()),
        NS::Number::numberWithDouble(-0.1),
        NS::Number::numberWithFloat(0.1F),
        NS::Number::numberWithDouble(std::numeric_limits<double>::infinity()),
        NS::Data::dataWithBytes({}
        ),
        NS::Data::dataWithBytes(NS::bytesOf("bytes")),
        NS::make<NS::MutableData>(NS::bytesOf("bytes")),
        NS::make<NS::Date>(-1.25),
        NS::Null::null(),
        NS::URL::fileURLWithPath(NS::str("/no/such folder")),
        NS::Ref<NS::Object>(*NS::URL::URLWithString_relativeToURL(
            *NS::str("a"), NS::URL::URLWithString(*NS::str("http://host/")))),
        NS::make<NS::Error>(NS::str("Domain"), -3,
                            NS::Dictionary::dictionaryWithEntries({                    {"k", NS::str("v")}}
        )),
        NS::make<NS::Array>(),
        NS::Array::arrayWithObjects({        NS::str("a"), NS::Null::null()}
        ),
        NS::make<NS::MutableArray>(),
        NS::Set::setWithObject(NS::str("a")),
        NS::make<NS::MutableSet>(),
        NS::Dictionary::dictionaryWithEntries({ {"k", NS::str("v")}, {"l", NS::make<NS::Array>()}}
        ),
        NS::make<NS::MutableDictionary>(),
    };
    for (const NS::Ref<NS::Object>& value : values) {
        const NS::RefPtr<NS::Object> back = roundTrip(value);
        ASSERT_TRUE(back) << value->description()->utf8();
        EXPECT_TRUE(back->isEqual(value.get())) << value->description()->utf8();
        EXPECT_STREQ(back->objectClass().name, value->objectClass().name);
        EXPECT_EQ(back->description()->utf8(), value->description()->utf8());
    }
}

TEST_F(KeyedUnarchiver, KeepsTheTypeOfANumber) {
    using Type = NS::Number::Type;
    EXPECT_EQ(as<NS::Number>(roundTrip(NS::Number::numberWithBool(true)))->type(), Type::kBoolean);
    EXPECT_EQ(as<NS::Number>(roundTrip(NS::Number::numberWithInt(1)))->type(), Type::kInteger);
    EXPECT_EQ(as<NS::Number>(roundTrip(NS::Number::numberWithFloat(1)))->type(), Type::kFloat);
    EXPECT_EQ(as<NS::Number>(roundTrip(NS::Number::numberWithDouble(1)))->type(), Type::kDouble);
}

TEST_F(KeyedUnarchiver, GivesNilForANilRoot) {
    EXPECT_FALSE(roundTrip(nullptr));
}

TEST_F(KeyedUnarchiver, GivesBackOneObjectForOneAndTwoForTwo) {
    const auto one = NS::str("same");
    const auto back =
        as<NS::Array>(roundTrip(NS::Array::arrayWithObjects({one, one, NS::str("same")})));
    EXPECT_EQ(back->objectAtIndex(0), back->objectAtIndex(1));
    EXPECT_NE(back->objectAtIndex(0), back->objectAtIndex(2));
    EXPECT_TRUE(back->objectAtIndex(0)->isEqual(back->objectAtIndex(2).get()));
}

TEST_F(KeyedUnarchiver, GivesBackEqualNumbersAsTheObjectsTheyWere) {
    const auto one = NS::Number::numberWithInt(5);
    const auto back = as<NS::Array>(
        roundTrip(NS::Array::arrayWithObjects({one, NS::Number::numberWithInt(5), one})));
    EXPECT_NE(back->objectAtIndex(0), back->objectAtIndex(1));
    EXPECT_EQ(back->objectAtIndex(0), back->objectAtIndex(2));
}

TEST_F(KeyedUnarchiver, RestoresARecordWithItsReferences) {
    const auto record = NS::make<ArchivedRecord>();
    record->setFirst(NS::str("one"));
    record->setSecond(record->first());
    record->setTime(2.5);
    const auto back = as<ArchivedRecord>(roundTrip(record));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->first()->description()->utf8(), "one");
    EXPECT_EQ(back->first(), back->second());
    EXPECT_EQ(back->time(), 2.5);
}

TEST_F(KeyedUnarchiver, LetsAnArrayHoldItself) {
    const auto array = NS::make<NS::MutableArray>();
    array->addObject(array);
    const auto back = as<NS::MutableArray>(roundTrip(array));
    EXPECT_EQ(back->objectAtIndex(0), back);
    array->removeAllObjects();
    back->removeAllObjects();
}

TEST_F(KeyedUnarchiver, LetsRecordsHoldEachOther) {
    const auto record = NS::make<ArchivedRecord>();
    const auto dictionary = NS::make<NS::MutableDictionary>();
    dictionary->setObject_forKey(record, "record");
    record->setFirst(dictionary);
    const auto back = as<ArchivedRecord>(roundTrip(record));
    EXPECT_EQ(as<NS::Dictionary>(back->first())->objectForKey("record"), back);
    record->setFirst(nullptr);
    back->setFirst(nullptr);
}

TEST_F(KeyedUnarchiver, GivesNilAndZeroForKeysThatAreNotThere) {
    const auto root = archive.addRecord(archive.addClass("ArchivedRecord"), {});
    const auto back = as<ArchivedRecord>(unarchive(*archive.data(root)));
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->first());
    EXPECT_EQ(back->time(), 0);
}

TEST_F(KeyedUnarchiver, FindsKeysInAnyOrder) {
    const auto text = archive.uid(archive.add(archive.list.addAscii("one")));
    const auto time = archive.list.addInteger(3);
    const auto root = archive.addRecord(archive.addClass("ArchivedRecord"),
                                        {
                                            {"time",  time},
                                            {"other", time},
                                            {"first", text}
    });
    const auto back = as<ArchivedRecord>(unarchive(*archive.data(root)));
    EXPECT_EQ(back->first()->description()->utf8(), "one");
    EXPECT_EQ(back->time(), 3);
}

TEST_F(KeyedUnarchiver, FindsKeysThatAreWrittenAsUtf16) {
    const auto key = archive.list.addString(*NS::str("$class"));
    const auto wide = archive.list.addString(*NS::str("\xC3\xA9"));
    const auto record = archive.addClass("ArchivedRecord");
    const HandMade::Reference keys[] = {wide, key};
    const HandMade::Reference values[] = {archive.list.addBool(true), archive.uid(record)};
    const auto root = archive.add(archive.list.addDictionary(keys, values));
    EXPECT_TRUE(as<ArchivedRecord>(unarchive(*archive.data(root))));
}

TEST_F(KeyedUnarchiver, RecordsOfOneClassMayHaveDifferentKeys) {
    const auto record = archive.addClass("ArchivedRecord");
    const auto half = archive.addRecord(record, {
                                                    {"time", archive.list.addReal(0.5)}
    });
    const auto text = archive.uid(archive.add(archive.list.addAscii("one")));
    const auto other = archive.addRecord(record, {
                                                     {"first", text}
    });
    const auto root = archive.addCollection(archive.addClass("NSArray"), {half, other, half});
    const auto back = as<NS::Array>(unarchive(*archive.data(root)));
    EXPECT_EQ(as<ArchivedRecord>(NS::RefPtr<NS::Object>(back->objectAtIndex(0)))->time(), 0.5);
    EXPECT_TRUE(as<ArchivedRecord>(NS::RefPtr<NS::Object>(back->objectAtIndex(1)))->first());
}

// Records that have the same keys, in two orders and with one missing.
class PropertyRecords : public KeyedUnarchiver {
  protected:
    HandMade::Uid text(std::string_view characters) {
        return archive.add(archive.list.addAscii(characters));
    }
    HandMade::Uid record(std::vector<HandMade::Reference> keys,
                         std::vector<HandMade::Reference> values) {
        keys.insert(keys.begin(), classKey);
        values.insert(values.begin(), archive.uid(record_));
        return archive.add(archive.list.addDictionary(keys, values));
    }
    HandMade::Uid inOrder(double seconds, HandMade::Uid one, HandMade::Uid two) {
        return record({time, first, second},
                      {archive.list.addReal(seconds), archive.uid(one), archive.uid(two)});
    }
    HandMade::Uid backwards(double seconds, HandMade::Uid one, HandMade::Uid two) {
        return record({second, first, time},
                      {archive.uid(two), archive.uid(one), archive.list.addReal(seconds)});
    }
    std::vector<NS::RefPtr<PropertyRecord>> read(const std::vector<HandMade::Uid>& records) {
        const auto root = archive.addCollection(archive.addClass("NSArray"), records);
        std::vector<NS::RefPtr<PropertyRecord>> all;
        const auto array = as<NS::Array>(unarchive(*archive.data(root)));
        for (const auto& each : *array) {
            all.push_back(as<PropertyRecord>(NS::RefPtr<NS::Object>(each)));
        }
        return all;
    }

    HandMade::Uid record_ = archive.addClass("PropertyRecord");
    HandMade::Reference classKey = archive.list.addAscii("$class");
    HandMade::Reference time = archive.list.addAscii("time");
    HandMade::Reference first = archive.list.addAscii("first");
    HandMade::Reference second = archive.list.addAscii("second");
};

TEST_F(PropertyRecords, AreReadAlikeInAnyOrderOfTheirKeys) {
    const auto all = read({inOrder(1, text("a"), text("b")), inOrder(2, text("c"), text("d")),
                           backwards(3, text("e"), text("f")), inOrder(4, text("g"), text("h")),
                           record({second}, {archive.uid(text("i"))})});
    ASSERT_EQ(all.size(), 5U);
    EXPECT_EQ(all[0]->text(), "1 a b");
    EXPECT_EQ(all[1]->text(), "2 c d");
    EXPECT_EQ(all[2]->text(), "3 e f");
    EXPECT_EQ(all[3]->text(), "4 g h");
    EXPECT_EQ(all[4]->text(), "0 nil i");
}

TEST_F(PropertyRecords, MayStandWithinOneAnother) {
    const auto inner = backwards(1, text("a"), text("b"));
    const auto all = read({inOrder(2, inner, text("c")),
                           inOrder(3, backwards(4, text("d"), text("e")), text("f")), inner});
    ASSERT_EQ(all.size(), 3U);
    const auto within = [](const auto& outer) {
        return as<PropertyRecord>(outer->first())->text();
    };
    EXPECT_EQ(within(all[0]), "1 a b");
    EXPECT_EQ(all[0]->second()->description()->utf8(), "c");
    EXPECT_EQ(within(all[1]), "4 d e");
    EXPECT_EQ(all[1]->second()->description()->utf8(), "f");
    EXPECT_EQ(all[2]->text(), "1 a b");
}

// Other writers write equal texts once; they were two objects all the same.
TEST_F(KeyedUnarchiver, MakesTwoObjectsOfTwoEntriesThatShareAValue) {
    const auto text = archive.list.addAscii("shared");
    const auto root =
        archive.addCollection(archive.addClass("NSArray"), {archive.add(text), archive.add(text)});
    const auto back = as<NS::Array>(unarchive(*archive.data(root)));
    EXPECT_NE(back->objectAtIndex(0), back->objectAtIndex(1));
}

TEST_F(KeyedUnarchiver, ReadsATextThatStandsInADictionaryOfItsOwn) {
    const auto string = archive.addRecord(archive.addClass("NSString"),
                                          {
                                              {"NS.string", archive.list.addAscii("boxed")}
    });
    EXPECT_EQ(unarchive(*archive.data(string))->description()->utf8(), "boxed");
}

TEST_F(KeyedUnarchiver, ReadsTextsFromTheirUtf8Bytes) {
    const auto bytes = archive.list.addData(NS::bytesOf("caf\xC3\xA9"));
    for (const char* const name : {"NSString", "NSMutableString"}) {
        const auto root = archive.addRecord(archive.addClass(name), {
                                                                        {"NS.bytes", bytes}
        });
        const auto text = unarchive(*archive.data(root));
        EXPECT_STREQ(text->objectClass().name, name);
        EXPECT_EQ(text->description()->utf8(), "caf\xC3\xA9");
    }
}

TEST_F(KeyedUnarchiver, ReadsDataFromAnyOfTheirForms) {
    const auto plain = archive.list.addData(NS::bytesOf("d"));
    const auto entry = archive.uid(archive.add(plain));
    const std::pair<const char*, HandMade::Members> records[] = {
        {"NSData",        {{"NS.data", plain}} },
        {"NSData",        {{"NS.bytes", plain}}},
        {"NSData",        {{"NS.data", entry}} },
        {"NSMutableData", {{"NS.bytes", plain}}},
        {"NSMutableData", {{"NS.data", entry}} },
    };
    for (const auto& [name, members] : records) {
        const auto data =
            unarchive(*archive.data(archive.addRecord(archive.addClass(name), members)));
        EXPECT_STREQ(data->objectClass().name, name);
        EXPECT_EQ(NS::charactersOf(as<NS::Data>(data)->bytes()), "d");
    }
}

// Writers that write equal values once let two objects have one data object of the list.
TEST_F(KeyedUnarchiver, MakesTwoObjectsOfRecordsThatShareTheirContents) {
    const std::string contents(10'000, 'd');
    const auto data = archive.list.addData(NS::bytesOf(contents));
    const auto text = archive.list.addAscii(contents);
    const std::tuple<const char*, const char*, HandMade::Reference> rows[] = {
        {"NSMutableData",   "NS.data",   data                          },
        {"NSMutableData",   "NS.bytes",  archive.uid(archive.add(data))},
        {"NSData",          "NS.data",   archive.uid(archive.add(data))},
        {"NSMutableString", "NS.string", archive.uid(archive.add(text))},
        {"NSString",        "NS.string", archive.uid(archive.add(text))},
        {"NSMutableString", "NS.bytes",  data                          },
        {"NSString",        "NS.bytes",  archive.uid(archive.add(data))},
    };
    for (const auto& [name, key, value] : rows) {
        const auto record = archive.addClass(name);
        std::vector<HandMade::Uid> entries;
        for (int i = 0; i < 10; ++i) {
            entries.push_back(archive.addRecord(record, {
                                                            {key, value}
            }));
        }
        const auto back = as<NS::Array>(
            unarchive(*archive.data(archive.addCollection(archive.addClass("NSArray"), entries))));
        EXPECT_NE(back->objectAtIndex(8), back->objectAtIndex(9)) << name << ' ' << key;
        EXPECT_STREQ(back->objectAtIndex(9)->objectClass().name, name);
        EXPECT_TRUE(back->objectAtIndex(9)->isEqual(back->objectAtIndex(0).get()));
    }
}

TEST_F(KeyedUnarchiver, ChangesOneOfTheDataThatShareTheirContents) {
    const auto data = archive.uid(archive.add(archive.list.addData(NS::bytesOf("shared"))));
    const auto record = archive.addClass("NSMutableData");
    const HandMade::Members members{
        {"NS.data", data}
    };
    const auto one = archive.addRecord(record, members);
    const auto other = archive.addRecord(record, members);
    const auto back = as<NS::Array>(
        unarchive(*archive.data(archive.addCollection(archive.addClass("NSArray"), {one, other}))));
    const auto first = as<NS::MutableData>(NS::RefPtr<NS::Object>(back->objectAtIndex(0)));
    const auto second = as<NS::MutableData>(NS::RefPtr<NS::Object>(back->objectAtIndex(1)));
    first->appendBytes(NS::bytesOf("!"));
    EXPECT_EQ(NS::charactersOf(first->bytes()), "shared!");
    EXPECT_EQ(NS::charactersOf(second->bytes()), "shared");
}

// Texts that are equal are not the same; some compare identifiers by identity.
TEST_F(KeyedUnarchiver, KeepsEqualTextsApartHoweverManyShareTheirCharacters) {
    const auto text = archive.list.addAscii("an identifier of some length, one of many");
    std::vector<HandMade::Uid> entries;
    for (int i = 0; i < 1000; ++i) {
        entries.push_back(archive.add(text));
    }
    const auto back = as<NS::Array>(
        unarchive(*archive.data(archive.addCollection(archive.addClass("NSArray"), entries))));
    for (std::size_t i = 1; i < 1000; ++i) {
        ASSERT_NE(back->objectAtIndex(i - 1), back->objectAtIndex(i)) << i;
        ASSERT_TRUE(back->objectAtIndex(i - 1)->isEqual(back->objectAtIndex(i).get())) << i;
    }
}

TEST_F(KeyedUnarchiver, ReadsCollectionsThatHoldPlainValuesInPlace) {
    const HandMade::Reference values[] = {archive.list.addAscii("a"), archive.list.addInteger(1)};
    const auto list = archive.list.addArray(values);
    const auto text = archive.list.addAscii("a");
    const auto array = as<NS::Array>(unarchive(
        *archive.data(archive.addRecord(archive.addClass("NSArray"), {
                                                                         {"NS.objects", list}
    }))));
    ASSERT_EQ(array->count(), 2U);
    EXPECT_EQ(array->objectAtIndex(0)->description()->utf8(), "a");
    EXPECT_EQ(array->objectAtIndex(1)->description()->utf8(), "1");
    const auto set = as<NS::Set>(unarchive(*archive.data(archive.addRecord(
        archive.addClass("NSSet"), {
                                       {"NS.objects", archive.list.addArray({&text, 1})}
    }))));
    EXPECT_TRUE(set->containsObject(*NS::str("a")));
    const auto dictionary = as<NS::Dictionary>(unarchive(*archive.data(archive.addRecord(
        archive.addClass("NSDictionary"), {
                                              {"NS.keys",    list},
                                              {"NS.objects", list}
    }))));
    EXPECT_EQ(dictionary->objectForKey("a")->description()->utf8(), "a");
}

TEST_F(KeyedUnarchiver, ReadsNumbersBehindAUid) {
    const auto number = [&](HandMade::Reference value) {
        return archive.uid(archive.add(value));
    };
    const auto boxed = archive.addRecord(archive.addClass("NSNumber"),
                                         {
                                             {"NS.dblval", archive.list.addReal(2.5)}
    });
    const std::pair<HandMade::Reference, double> rows[] = {
        {number(archive.list.addReal(0.5)),                         0.5                  },
        {number(archive.list.addInteger(-7)),                       -7                   },
        {number(archive.list.addUnsigned(std::uint64_t{1} << 63U)), 9223372036854775808.0},
        {archive.uid(boxed),                                        2.5                  },
        {archive.uid(0),                                            0                    },
        {number(archive.list.addAscii("$null")),                    0                    },
    };
    for (const auto& [value, expected] : rows) {
        const auto root = archive.addRecord(archive.addClass("NSDate"), {
                                                                            {"NS.time", value}
        });
        const auto date = as<NS::Date>(unarchive(*archive.data(root)));
        EXPECT_EQ(date->timeIntervalSinceReferenceDate(), expected);
    }
}

TEST_F(KeyedUnarchiver, ReadsIntegersBehindAUid) {
    const auto domain = archive.uid(archive.add(archive.list.addAscii("Domain")));
    const auto boxed = archive.addRecord(archive.addClass("NSNumber"),
                                         {
                                             {"NS.intval", archive.list.addInteger(-7)}
    });
    for (const auto code : {archive.add(archive.list.addInteger(-7)), boxed}) {
        const auto root = archive.addRecord(
            archive.addClass("NSError"), {
                                             {"NSCode",   archive.uid(code)},
                                             {"NSDomain", domain           }
        });
        EXPECT_EQ(as<NS::Error>(unarchive(*archive.data(root)))->code(), -7);
    }
}

TEST_F(KeyedUnarchiver, RaisesForAUidBehindAUid) {
    const auto time = archive.uid(archive.add(archive.uid(0)));
    EXPECT_EQ(nameOf(archive.addRecord(archive.addClass("NSDate"),
                                       {
                                           {"NS.time", time}
    })),
              NS::kInvalidArgumentException);
    EXPECT_EQ(nameOf(archive.addRecord(archive.addClass("NSDate"),
                                       {
                                           {"NS.time", archive.uid(9999)}
    })),
              NS::kInvalidArgumentException);
}

// A record is itself whatever it holds; a collection is what it holds.
TEST_F(KeyedUnarchiver, LetsARecordBeAMemberOrKeyOfWhatItHolds) {
    const auto set = NS::make<NS::MutableSet>();
    const auto dictionary = NS::make<NS::MutableDictionary>();
    const auto record = NS::make<ArchivedRecord>();
    set->addObject(record);
    record->setFirst(set);
    record->setSecond(dictionary);
    dictionary->setObject_forKey(NS::str("value"), record);
    const auto back = as<ArchivedRecord>(roundTrip(record));
    ASSERT_TRUE(back);
    EXPECT_TRUE(as<NS::Set>(back->first())->containsObject(*back));
    EXPECT_TRUE(as<NS::Dictionary>(back->second())->objectForKey(*back));
    for (const auto& each : {NS::Ref<ArchivedRecord>(*back), record}) {
        each->setFirst(nullptr);
        each->setSecond(nullptr);
    }
}

TEST_F(KeyedUnarchiver, ReadsNumbersThatAreBoxed) {
    const std::tuple<const char*, HandMade::Reference, const char*> rows[] = {
        {"NS.number",  archive.list.addUnsigned(~std::uint64_t{0}), "18446744073709551615"},
        {"NS.boolval", archive.list.addBool(true),                  "1"                   },
        {"NS.intval",  archive.list.addInteger(-7),                 "-7"                  },
        {"NS.dblval",  archive.list.addReal(0.5),                   "0.5"                 },
    };
    for (const auto& [key, value, expected] : rows) {
        const auto root = archive.addRecord(archive.addClass("NSNumber"), {
                                                                              {key, value}
        });
        EXPECT_EQ(unarchive(*archive.data(root))->description()->utf8(), expected) << key;
    }
}

// The name of nil means nil wherever it stands, not only at UID 0.
TEST_F(KeyedUnarchiver, TakesTheNameOfNilForNilAtAnyUid) {
    const auto null = archive.add(archive.list.addAscii("$null"));
    EXPECT_FALSE(unarchive(*archive.data(null)));
    const auto root =
        archive.addRecord(archive.addClass("ArchivedRecord"),
                          {
                              {"first",   archive.uid(null)},
                              {"$$class", archive.uid(null)}
    });
    const auto record = as<ArchivedRecord>(unarchive(*archive.data(root)));
    ASSERT_TRUE(record);
    EXPECT_FALSE(record->first());
    EXPECT_FALSE(record->second());
    EXPECT_EQ(nameOf(archive.addCollection(archive.addClass("NSArray"), {null})),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(KeyedUnarchiver, UsesTheFirstHintThatItKnows) {
    const HandMade::Reference hints[] = {archive.list.addBool(true),
                                         archive.list.addAscii("NoSuchHint"),
                                         archive.list.addAscii("NSMutableArray")};
    const auto name = archive.list.addAscii("NoSuchClass");
    const auto hinted = archive.add(archive.dictionary({
        {"$classname",  name                        },
        {"$classhints", archive.list.addArray(hints)}
    }));
    EXPECT_TRUE(as<NS::MutableArray>(unarchive(*archive.data(archive.addCollection(hinted, {})))));
}

// A subclass may keep what its superclass knows nothing of.
TEST_F(KeyedUnarchiver, DoesNotTakeASuperclassForAClassThatItDoesNotKnow) {
    const HandMade::Reference chain[] = {archive.list.addAscii("NoSuchClass"),
                                         archive.list.addAscii("ArchivedRecord")};
    const auto unknown = archive.add(archive.dictionary({
        {"$classname", chain[0]                    },
        {"$classes",   archive.list.addArray(chain)}
    }));
    const auto root = archive.addRecord(unknown, {});
    EXPECT_EQ(nameOf(root), NS::kInvalidUnarchiveOperationException);
    EXPECT_NE(reasonOf(root).find("(NoSuchClass)"), std::string::npos);
}

TEST_F(KeyedUnarchiver, TakesTheRootFromAmongSeveralTopObjects) {
    archive.top = {
        {"other", archive.list.addBool(true)}
    };
    const auto root = archive.add(archive.list.addAscii("root"));
    EXPECT_EQ(unarchive(*archive.data(root))->description()->utf8(), "root");
}

TEST_F(KeyedUnarchiver, GivesNilForTopObjectsWithoutARoot) {
    archive.rootKey = "$0";
    const auto root = archive.add(archive.list.addAscii("text"));
    EXPECT_FALSE(unarchive(*archive.data(root)));
}

TEST_F(KeyedUnarchiver, ReadsAPlainDateOfTheList) {
    const auto root = archive.add(archive.list.addDate(1.5));
    EXPECT_EQ(as<NS::Date>(unarchive(*archive.data(root)))->timeIntervalSinceReferenceDate(), 1.5);
}

// What dates looked like before does not decide on the next one.
TEST_F(KeyedUnarchiver, ReadsDatesWhateverTheirRecordsLookLike) {
    const auto date = archive.addClass("NSDate");
    const auto text = archive.addClass("NSString");
    const auto classKey = archive.list.addAscii("$class");
    const auto timeKey = archive.list.addAscii("NS.time");
    const auto record = [&](HandMade::Reference firstKey, HandMade::Reference first,
                            HandMade::Reference secondKey, HandMade::Reference second) {
        const HandMade::Reference keys[] = {firstKey, secondKey};
        const HandMade::Reference values[] = {first, second};
        return archive.add(archive.list.addDictionary(keys, values));
    };
    const auto dateUid = archive.uid(date);
    const auto one = archive.list.addReal(1);
    const auto two = archive.uid(archive.add(archive.list.addReal(2)));
    const std::vector<HandMade::Uid> elements = {
        record(classKey, dateUid, timeKey, one), record(classKey, dateUid, timeKey, one),
        record(timeKey, one, classKey, dateUid), record(classKey, dateUid, timeKey, two),
        record(classKey, archive.uid(text), archive.list.addAscii("NS.string"),
               archive.list.addAscii("no date"))};
    const auto back = as<NS::Array>(
        unarchive(*archive.data(archive.addCollection(archive.addClass("NSArray"), elements))));
    std::vector<double> times;
    for (std::size_t i = 0; i < 4; ++i) {
        times.push_back(as<NS::Date>(NS::RefPtr<NS::Object>(back->objectAtIndex(i)))
                            ->timeIntervalSinceReferenceDate());
    }
    EXPECT_EQ(times, (std::vector<double>{1, 1, 1, 2}));
    EXPECT_EQ(back->objectAtIndex(4)->description()->utf8(), "no date");
}

TEST_F(KeyedUnarchiver, RefusesElementsUnderKeysOfTheirOwn) {
    const auto text = archive.uid(archive.add(archive.list.addAscii("x")));
    EXPECT_EQ(nameOf(archive.addRecord(archive.addClass("NSArray"),
                                       {
                                           {"NS.object.0", text}
    })),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(KeyedUnarchiver, RefusesNilInAList) {
    EXPECT_EQ(nameOf(archive.addCollection(archive.addClass("NSArray"), {0})),
              NS::kInvalidUnarchiveOperationException);
}

// One text twice, another that is equal, and a record: each UID a dictionary of its own.
constexpr std::string_view kArchiveInXML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
    "<key>$version</key><integer>100000</integer>"
    "<key>$archiver</key><string>NSKeyedArchiver</string>"
    "<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict></dict>"
    "<key>$objects</key><array><string>$null</string>"
    "<dict><key>$class</key><dict><key>CF$UID</key><integer>5</integer></dict>"
    "<key>NS.objects</key><array><dict><key>CF$UID</key><integer>2</integer></dict>"
    "<dict><key>CF$UID</key><integer>3</integer></dict>"
    "<dict><key>CF$UID</key><integer>2</integer></dict>"
    "<dict><key>CF$UID</key><integer>4</integer></dict></array></dict>"
    "<string>same</string><string>same</string>"
    "<dict><key>$class</key><dict><key>CF$UID</key><integer>6</integer></dict>"
    "<key>time</key><real>1.5</real></dict>"
    "<dict><key>$classname</key><string>NSArray</string></dict>"
    "<dict><key>$classname</key><string>ArchivedRecord</string></dict>"
    "</array></dict></plist>";

TEST_F(KeyedUnarchiver, ReadsTheXMLForm) {
    const auto array =
        as<NS::Array>(unarchive(*NS::Data::dataWithBytes(NS::bytesOf(kArchiveInXML))));
    ASSERT_TRUE(array);
    ASSERT_EQ(array->count(), 4U);
    EXPECT_EQ(array->objectAtIndex(0)->description()->utf8(), "same");
    EXPECT_EQ(array->objectAtIndex(0), array->objectAtIndex(2));
    EXPECT_NE(array->objectAtIndex(0), array->objectAtIndex(1));
    EXPECT_EQ(as<ArchivedRecord>(NS::RefPtr<NS::Object>(array->objectAtIndex(3)))->time(), 1.5);
}

// Tools that turn XML into a binary list do not all know what this dictionary stands for.
TEST_F(KeyedUnarchiver, TakesTheDictionaryOfXMLForAUidInABinaryListToo) {
    const auto uid = [&](HandMade::Uid entry) {
        return archive.dictionary({
            {"CF$UID", archive.list.addInteger(entry)}
        });
    };
    const auto text = archive.add(archive.list.addAscii("x"));
    const HandMade::Reference elements[] = {uid(text), uid(text)};
    const auto root = archive.add(archive.dictionary({
        {"$class",     uid(archive.addClass("NSArray"))},
        {"NS.objects", archive.list.addArray(elements) }
    }));
    const auto array = as<NS::Array>(unarchive(*archive.data(root)));
    ASSERT_TRUE(array);
    EXPECT_EQ(array->objectAtIndex(0), array->objectAtIndex(1));
}

TEST_F(KeyedUnarchiver, SaysWhatIsWrongWithXML) {
    const std::string cut(kArchiveInXML.substr(0, 100));
    EXPECT_EQ(
        Tests::reasonOfException([&] { unarchive(*NS::Data::dataWithBytes(NS::bytesOf(cut))); }),
        "*** -[NSKeyedUnarchiver initForReadingWithData:]: incomprehensible archive: "
        "unclosed token on line 1");
}

TEST_F(KeyedUnarchiver, RaisesForBytesThatAreNoArchive) {
    for (const std::string_view bytes : {"", "text", "bplist00", "<?xml version=\"1.0\"?>"}) {
        const auto raised = Tests::raisedException(
            [&] { unarchive(*NS::Data::dataWithBytes(NS::bytesOf(bytes))); });
        ASSERT_TRUE(raised) << bytes;
        EXPECT_EQ(raised->name()->utf8(), NS::kInvalidArgumentException);
        EXPECT_NE(raised->reason()->utf8().find("incomprehensible archive"), std::string::npos);
    }
}

TEST_F(KeyedUnarchiver, RaisesForAListThatIsNoArchive) {
    Tests::HandWrittenList list;
    list.add("\x09");
    EXPECT_EQ(Tests::nameOfException([&] { unarchive(*list.data()); }),
              NS::kInvalidArgumentException);
}

TEST_F(KeyedUnarchiver, RaisesForAnotherArchiverOrVersion) {
    const auto root = archive.add(archive.list.addBool(true));
    archive.archiver = "OtherArchiver";
    EXPECT_EQ(nameOf(root), NS::kInvalidArgumentException);
    archive.archiver = "NSKeyedArchiver";
    archive.version = 100001;
    EXPECT_EQ(nameOf(root), NS::kInvalidArgumentException);
}

TEST_F(KeyedUnarchiver, NamesTheClassThatItDoesNotKnow) {
    const auto root = archive.addRecord(archive.addClass("NoSuchClass"), {});
    EXPECT_EQ(nameOf(root), NS::kInvalidUnarchiveOperationException);
    EXPECT_NE(reasonOf(root).find("cannot decode object of class (NoSuchClass)"),
              std::string::npos);
}

TEST_F(KeyedUnarchiver, CutsTheNameOfAnUnknownClass) {
    const auto root = archive.addRecord(archive.addClass(std::string(100000, 'x')), {});
    EXPECT_LT(reasonOf(root).size(), 400U);
}

TEST_F(KeyedUnarchiver, RaisesForAClassThatIsNotReadBack) {
    const auto data =
        NS::KeyedArchiver::archivedDataWithRootObject(NS::make<Tests::UnknownRecord>());
    EXPECT_EQ(Tests::nameOfException([&] { unarchive(*data); }),
              NS::kInvalidUnarchiveOperationException);
}

TEST_F(KeyedUnarchiver, RaisesForObjectsWithoutClass) {
    EXPECT_EQ(nameOf(archive.add(archive.dictionary({}))), NS::kInvalidArgumentException);
    const auto noName = archive.add(archive.dictionary({}));
    EXPECT_EQ(nameOf(archive.addRecord(noName, {})), NS::kInvalidArgumentException);
    const auto text = archive.add(archive.list.addAscii("NSArray"));
    EXPECT_EQ(nameOf(archive.addRecord(text, {})), NS::kInvalidArgumentException);
    EXPECT_EQ(nameOf(archive.addRecord(9999, {})), NS::kInvalidArgumentException);
}

TEST_F(KeyedUnarchiver, RaisesForAClassInAnObjectsPlaceAndTheOtherWayRound) {
    const auto array = archive.addClass("NSArray");
    const auto empty = archive.addCollection(array, {});
    EXPECT_EQ(nameOf(archive.addCollection(array, {empty, array})), NS::kInvalidArgumentException);
    const auto ofNoClass = archive.addRecord(empty, {});
    EXPECT_EQ(nameOf(archive.addCollection(array, {empty, ofNoClass})),
              NS::kInvalidArgumentException);
}

TEST_F(KeyedUnarchiver, RaisesForValuesOfTheWrongKind) {
    const auto text = archive.list.addAscii("text");
    const auto flag = archive.list.addBool(true);
    const auto uidOfFlag = archive.uid(archive.add(flag));
    const auto keys = archive.list.addArray({&uidOfFlag, 1});
    const auto list = archive.list.addArray({&flag, 1});
    const std::pair<const char*, HandMade::Members> records[] = {
        {"ArchivedRecord",  {{"time", text}}                                                         },
        {"ArchivedRecord",  {{"time", uidOfFlag}}                                                    },
        {"ArchivedRecord",  {{"first", archive.list.addArray({})}}                                   },
        {"NSArray",         {}                                                                       },
        {"NSArray",         {{"NS.objects", text}}                                                   },
        {"NSArray",         {{"NS.objects", archive.list.addArray({&list, 1})}}                      },
        {"NSArray",         {{"NS.objects", archive.uids({0})}}                                      },
        {"NSDictionary",    {{"NS.keys", keys}, {"NS.objects", archive.list.addArray({})}}           },
        {"NSDate",          {{"NS.time", text}}                                                      },
        {"NSMutableString", {{"NS.string", flag}}                                                    },
        {"NSMutableData",   {{"NS.data", text}}                                                      },
        {"NSMutableData",   {{"NS.data", uidOfFlag}}                                                 },
        {"NSString",        {{"NS.bytes", archive.list.addData(NS::bytesOf("\xFF"))}}                },
        {"NSString",        {{"NS.bytes", uidOfFlag}}                                                },
        {"NSURL",           {{"NS.relative", archive.uid(archive.add(archive.list.addAscii("a b")))}}},
        {"NSURL",           {{"NS.relative", uidOfFlag}}                                             },
        {"NSURL",           {{"NS.relative", text}, {"NS.base", uidOfFlag}}                          },
        {"NSError",         {{"NSCode", flag}}                                                       },
        {"NSError",         {{"NSCode", uidOfFlag}}                                                  },
        {"NSError",         {{"NSDomain", uidOfFlag}}                                                },
        {"NSError",         {}                                                                       },
        {"NSNumber",        {}                                                                       },
    };
    for (const auto& [name, members] : records) {
        const auto root = archive.addRecord(archive.addClass(name), members);
        EXPECT_EQ(nameOf(root), NS::kInvalidUnarchiveOperationException) << name;
    }
}

// Whatever holds the others: the record, the array and the dictionary are one circle.
TEST_F(KeyedUnarchiver, LeavesNothingOfAFailedArchiveBehind) {
    const int before = ArchivedRecord::living;
    const auto record = archive.addClass("ArchivedRecord");
    const auto key = archive.add(archive.list.addAscii("key"));
    const auto unknown = archive.addRecord(archive.addClass("NoSuchClass"), {});
    const auto array = archive.addClass("NSMutableArray");
    const auto dictionary = archive.addClass("NSDictionary");
    const auto first = static_cast<HandMade::Uid>(archive.entries.size());
    archive.addRecord(record, {
                                  {"first", archive.uid(first + 1)}
    });
    archive.addDictionary(dictionary, {key}, {first + 2});
    archive.addCollection(array, {first, unknown});
    const auto root = first + 2;
    EXPECT_EQ(nameOf(root), NS::kInvalidUnarchiveOperationException);
    EXPECT_EQ(ArchivedRecord::living, before);
}

} // namespace
