#include "Platform/Foundation/KeyedArchiver.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/PropertyList.h"
#include "Platform/Foundation/Testing/ArchiveText.h"
#include "Platform/Foundation/Testing/ArchivedRecords.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "Platform/Foundation/URL.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using testing::ContainsRegex;

class KeyedArchiver : public testing::Test {
  protected:
    // The archive's property list as text, UIDs as #n.
    static std::string archive(const NS::RefPtr<NS::Object>& root) {
        return Tests::textOfList(*NS::KeyedArchiver::archivedDataWithRootObject(root));
    }
    // The entries of "$objects" after the null.
    static std::string entries(const NS::RefPtr<NS::Object>& root) {
        const std::string whole = archive(root);
        const std::string begin = "$objects=[\"$null\", ";
        const std::size_t start = whole.find(begin) + begin.size();
        return whole.substr(start, whole.size() - start - 2);
    }
    // An array of as many texts.
    static NS::Ref<NS::Object> listOf(std::size_t count) {
        const auto list = NS::MutableArray::arrayWithCapacity(count);
        for (std::size_t i = 0; i < count; ++i) {
            list->addObject(NS::str("text"));
        }
        return list;
    }
    // An object within as many arrays.
    static NS::Ref<NS::Object> nestedIn(int arrays, NS::Ref<NS::Object> object) {
        for (int i = 0; i < arrays; ++i) {
            object = NS::Array::arrayWithObjects({object});
        }
        return object;
    }

    static constexpr int kMostArrays = 511; // within one another, around an object
};

TEST_F(KeyedArchiver, PutsTheRootIntoTheFormatsContainer) {
    EXPECT_EQ(archive(NS::str("text")), "{$version=100000, $archiver=\"NSKeyedArchiver\", "
                                        "$top={root=#1}, $objects=[\"$null\", \"text\"]}");
}

TEST_F(KeyedArchiver, ArchivesANilRootAsNil) {
    EXPECT_EQ(archive(nullptr), "{$version=100000, $archiver=\"NSKeyedArchiver\", "
                                "$top={root=#0}, $objects=[\"$null\"]}");
}

TEST_F(KeyedArchiver, WritesPlainValuesAsTheyAre) {
    EXPECT_EQ(entries(NS::Number::numberWithLongLong(-7)), "-7");
    EXPECT_EQ(entries(NS::Number::numberWithBool(true)), "true");
    EXPECT_EQ(entries(NS::Number::numberWithDouble(1.5)), "1.5");
    EXPECT_EQ(entries(NS::Data::dataWithBytes(NS::bytesOf("ab"))), "<6162>");
}

TEST_F(KeyedArchiver, WritesOtherValuesUnderTheirKeysAndClassChain) {
    EXPECT_EQ(entries(NS::make<NS::Date>(2.5)),
              "{$class=#2, NS.time=2.5}, {$classname=\"NSDate\", $classes=[\"NSDate\", "
              "\"NSObject\"]}");
    EXPECT_EQ(entries(NS::make<NS::MutableString>(*NS::str("x"))),
              "{$class=#2, NS.string=\"x\"}, {$classname=\"NSMutableString\", "
              "$classes=[\"NSMutableString\", \"NSString\", \"NSObject\"]}");
    EXPECT_EQ(entries(NS::make<NS::MutableData>(NS::bytesOf("x"))),
              "{$class=#2, NS.data=<78>}, {$classname=\"NSMutableData\", "
              "$classes=[\"NSMutableData\", \"NSData\", \"NSObject\"]}");
    EXPECT_EQ(entries(NS::Null::null()), "{$class=#2}, {$classname=\"NSNull\", "
                                         "$classes=[\"NSNull\", \"NSObject\"]}");
}

TEST_F(KeyedArchiver, WritesCollectionsAsListsOfUids) {
    const auto array = NS::Array::arrayWithObjects({NS::str("a"), NS::str("a")});
    EXPECT_EQ(entries(array), "{$class=#2, NS.objects=[#3, #4]}, {$classname=\"NSArray\", "
                              "$classes=[\"NSArray\", \"NSObject\"]}, \"a\", \"a\"");
    const auto dictionary = NS::Dictionary::dictionaryWithEntries({
        {"k", NS::str("v")}
    });
    EXPECT_EQ(entries(dictionary),
              "{$class=#2, NS.keys=[#3], NS.objects=[#4]}, {$classname=\"NSDictionary\", "
              "$classes=[\"NSDictionary\", \"NSObject\"]}, \"k\", \"v\"");
}

TEST_F(KeyedArchiver, WritesURLsAndErrors) {
    const auto base = NS::URL::URLWithString(*NS::str("http://host/"));
    EXPECT_EQ(entries(NS::URL::URLWithString_relativeToURL(*NS::str("x"), base)),
              "{$class=#2, NS.base=#3, NS.relative=#4}, {$classname=\"NSURL\", "
              "$classes=[\"NSURL\", \"NSObject\"]}, {$class=#2, NS.base=#0, NS.relative=#5}, "
              "\"x\", \"http://host/\"");
    EXPECT_EQ(entries(NS::make<NS::Error>(NS::str("Domain"), 7)),
              "{$class=#2, NSCode=7, NSDomain=#3, NSUserInfo=#4}, {$classname=\"NSError\", "
              "$classes=[\"NSError\", \"NSObject\"]}, \"Domain\", {$class=#5, NS.keys=[], "
              "NS.objects=[]}, {$classname=\"NSDictionary\", $classes=[\"NSDictionary\", "
              "\"NSObject\"]}");
}

TEST_F(KeyedArchiver, WritesOneObjectOnceHoweverOftenItIsMet) {
    const auto text = NS::str("a");
    EXPECT_EQ(entries(NS::Array::arrayWithObjects({text, text})),
              "{$class=#2, NS.objects=[#3, #3]}, {$classname=\"NSArray\", "
              "$classes=[\"NSArray\", \"NSObject\"]}, \"a\"");
}

// An array that is held once only, and what it holds, are not looked for among what was met.
TEST_F(KeyedArchiver, WritesAnObjectOnceThatIsReachedFromTwoPlaces) {
    const NS::Ref<NS::Object> shared = NS::make<NS::Date>(1.0);
    const auto inner = [&] {
        return NS::Array::arrayWithObjects({shared});
    };
    EXPECT_EQ(entries(NS::Array::arrayWithObjects({inner(), inner()})),
              "{$class=#2, NS.objects=[#3, #4]}, {$classname=\"NSArray\", "
              "$classes=[\"NSArray\", \"NSObject\"]}, {$class=#2, NS.objects=[#5]}, "
              "{$class=#2, NS.objects=[#5]}, {$class=#6, NS.time=1}, {$classname=\"NSDate\", "
              "$classes=[\"NSDate\", \"NSObject\"]}");
}

TEST_F(KeyedArchiver, WritesADateWhereItIsMet) {
    const auto date = [](double seconds) -> NS::Ref<NS::Object> {
        return NS::make<NS::Date>(seconds);
    };
    EXPECT_EQ(entries(NS::Array::arrayWithObjects({date(1), date(2), NS::str("a")})),
              "{$class=#2, NS.objects=[#3, #5, #6]}, {$classname=\"NSArray\", "
              "$classes=[\"NSArray\", \"NSObject\"]}, {$class=#4, NS.time=1}, "
              "{$classname=\"NSDate\", $classes=[\"NSDate\", \"NSObject\"]}, "
              "{$class=#4, NS.time=2}, \"a\"");
}

TEST_F(KeyedArchiver, DoublesTheDollarOfARecordsKey) {
    const auto record = NS::make<Tests::ArchivedRecord>();
    record->setSecond(NS::str("s"));
    EXPECT_EQ(entries(record), "{$class=#2, first=#0, $$class=#3, time=0}, "
                               "{$classname=\"ArchivedRecord\", $classes=[\"ArchivedRecord\", "
                               "\"NSObject\"]}, \"s\"");
}

// Bare, it would read as nil.
TEST_F(KeyedArchiver, WritesATextThatReadsAsNullInADictionary) {
    EXPECT_EQ(entries(NS::str("$null")), "{$class=#2, NS.string=\"$null\"}, "
                                         "{$classname=\"NSString\", $classes=[\"NSString\", "
                                         "\"NSObject\"]}");
}

class TwiceUnderOneKey final : public NS::Object {
    NS_OBJECT(TwiceUnderOneKey)
  public:
    void encodeWithCoder(NS::KeyedArchiver& coder) const override {
        coder.encodeInt64_forKey(1, "k");
        coder.encodeBool_forKey(true, "l");
        coder.encodeInt64_forKey(2, "k");
    }
};
constinit const NS::Class TwiceUnderOneKey::kClass{.name = "Twice",
                                                   .superclass = &NS::Object::kClass};

TEST_F(KeyedArchiver, ReplacesAnEarlierValueOfTheSameKey) {
    EXPECT_TRUE(entries(NS::make<TwiceUnderOneKey>()).starts_with("{$class=#2, k=2, l=true}"));
}

TEST_F(KeyedArchiver, RaisesForAClassThatDoesNotEncode) {
    const auto object = NS::make<NS::Object>();
    EXPECT_EQ(Tests::nameOfException([&] { archive(NS::Array::arrayWithObjects({object})); }),
              NS::kInvalidArgumentException);
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST_F(KeyedArchiver, RaisesForObjectsTooDeepWithinOneAnother) {
    for (const NS::Ref<NS::Object>& innermost :
         std::vector<NS::Ref<NS::Object>>{NS::make<NS::Array>(), NS::make<NS::Date>(1.0)}) {
        const auto nested = nestedIn(kMostArrays, innermost);
        EXPECT_EQ(Tests::nameOfException([&] { archive(nested); }), "none");
        EXPECT_EQ(Tests::nameOfException([&] { archive(nestedIn(1, nested)); }),
                  NS::kInvalidArchiveOperationException);
    }
}

TEST_F(KeyedArchiver, CountsADateTooDeepThatWasMetBefore) {
    const auto date = NS::make<NS::Date>(1.0);
    const auto nested = nestedIn(kMostArrays, date);
    EXPECT_EQ(Tests::nameOfException([&] {
                  archive(NS::Array::arrayWithObjects({date, nested}));
              }),
              NS::kInvalidArchiveOperationException);
}

// A getter may make its value afresh at each call; two of them must not be taken for one because
// the second stands where the first one did.
TEST_F(KeyedArchiver, TellsPassingObjectsApart) {
    class Passing final : public NS::Object {
      public:
        void encodeWithCoder(NS::KeyedArchiver& coder) const override {
            for (int i = 0; i < 50; ++i) {
                coder.encodeObject_forKey(NS::Number::numberWithInt(i), "k" + std::to_string(i));
            }
        }
    };
    const std::string text = entries(NS::make<Passing>());
    EXPECT_NE(text.find("k0=#3, k1=#4, k2=#5"), std::string::npos) << text;
    EXPECT_NE(text.find(", 0, 1, 2, 3"), std::string::npos) << text;
}

TEST_F(KeyedArchiver, LetsGoOfEverythingItArchived) {
    const auto text = NS::str("text");
    const auto array = NS::Array::arrayWithObjects({text});
    archive(array);
    EXPECT_EQ(text->referenceCount(), 2U);
    EXPECT_EQ(array->referenceCount(), 1U);
}

// The memory of one archive is used for the next.
TEST_F(KeyedArchiver, LeavesNothingToTheNextArchive) {
    const NS::RefPtr<NS::Object> small = NS::make<Tests::ArchivedRecord>();
    const std::string first = archive(small);
    archive(listOf(1'000));
    EXPECT_EQ(archive(small), first);
    const auto refused = NS::Array::arrayWithObjects({NS::str("text"), NS::make<NS::Object>()});
    EXPECT_EQ(Tests::nameOfException([&] { archive(refused); }), NS::kInvalidArgumentException);
    EXPECT_EQ(archive(small), first);
}

TEST_F(KeyedArchiver, GivesBytesThatLaterArchivesDoNotChange) {
    for (const std::size_t count : {1U, 1'000U, 100'000U}) {
        const auto data = NS::KeyedArchiver::archivedDataWithRootObject(listOf(count));
        const std::string before(NS::charactersOf(data->bytes()));
        archive(NS::str("another text"));
        EXPECT_EQ(NS::charactersOf(data->bytes()), before) << count;
    }
}

TEST_F(KeyedArchiver, ArchivesFromWithinAnotherArchive) {
    class Nested final : public NS::Object {
      public:
        void encodeWithCoder(NS::KeyedArchiver& coder) const override {
            coder.encodeInt64_forKey(1, "before");
            const auto inner = NS::KeyedArchiver::archivedDataWithRootObject(NS::str("inner"));
            coder.encodeInt64_forKey(static_cast<std::int64_t>(inner->length()), "length");
        }
    };
    const auto alone = NS::KeyedArchiver::archivedDataWithRootObject(NS::str("inner"));
    const std::string text = entries(NS::make<Nested>());
    const std::string expected = "before=1, length=" + std::to_string(alone->length());
    EXPECT_NE(text.find(expected), std::string::npos) << text;
}

// One of them has the memory that is kept, the others their own.
TEST_F(KeyedArchiver, ArchivesOnSeveralThreadsAtOnce) {
    const auto list = listOf(100);
    const std::string expected = archive(list);
    std::atomic<int> different{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                different += archive(list) == expected ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(different, 0);
}

// Encodes numbers from one on, under keys of its own choice.
class Choosing final : public NS::Object {
  public:
    explicit Choosing(std::vector<const char*> keys) : keys_(std::move(keys)) {}

    void encodeWithCoder(NS::KeyedArchiver& coder) const override {
        std::int64_t number = 0;
        for (const char* const key : keys_) {
            coder.encodeInt64_forKey(++number, key);
        }
    }

  private:
    std::vector<const char*> keys_;
};

// Objects of a class mostly have the same keys in the same order, which the archiver counts on.
TEST_F(KeyedArchiver, WritesEachObjectsOwnKeys) {
    const std::string text = archive(NS::Array::arrayWithObjects(
        {NS::make<Choosing>(std::vector{"a", "b", "c"}),
         NS::make<Choosing>(std::vector{"b", "a", "c"}),
         NS::make<Choosing>(std::vector{"x", "a", "b"}),
         NS::make<Choosing>(std::vector{"a", "x", "c"}),
         NS::make<Choosing>(std::vector{"a", "b", "c", "d"}), NS::make<Choosing>(std::vector{"c"}),
         NS::make<Choosing>(std::vector{"a", "b", "a"})}));
    for (const char* const record : {"a=1, b=2, c=3", "b=1, a=2, c=3", "x=1, a=2, b=3",
                                     "a=1, x=2, c=3", "a=1, b=2, c=3, d=4", "c=1", "a=3, b=2"}) {
        EXPECT_THAT(text, ContainsRegex("[{].class=#[0-9]+, " + std::string(record) + "[}]"));
    }
}

TEST_F(KeyedArchiver, KeepsTheMemoryOfASmallArchive) {
    const auto archive = NS::KeyedArchiver::archivedDataWithRootObject(listOf(1'000));
    EXPECT_GE(NS::KeyedArchiver::keptBytes(), archive->length());
}

TEST_F(KeyedArchiver, GivesTheMemoryOfALargeArchiveBack) {
    (void)NS::KeyedArchiver::archivedDataWithRootObject(listOf(100'000));
    EXPECT_LE(NS::KeyedArchiver::keptBytes(), NS::KeyedArchiver::kMostKeptBytes);
}

TEST_F(KeyedArchiver, LeavesWhatIsMuchLongerThanItselfToTheNextArchive) {
    (void)NS::KeyedArchiver::archivedDataWithRootObject(listOf(20'000));
    const std::size_t kept = NS::KeyedArchiver::keptBytes();
    const auto small = NS::KeyedArchiver::archivedDataWithRootObject(listOf(2'000));
    ASSERT_GT(small->length(), 16U * 1024);
    EXPECT_GE(NS::KeyedArchiver::keptBytes(), kept);
}

} // namespace
