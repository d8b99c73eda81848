#include "Platform/Foundation/ArchiveNesting.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Set.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/ArchivedRecords.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using Tests::ArchivedRecord;

// What is written can be read back, and what could not is not written.
class ArchiveNesting : public testing::Test {
  protected:
    // Reads what was written back, and says what either raised. Nothing that holds itself stays.
    static std::string trip(const NS::RefPtr<NS::Object>& root) {
        NS::RefPtr<NS::Data> data;
        const std::string written = Tests::reasonOfException(
            [&] { data = NS::KeyedArchiver::archivedDataWithRootObject(root); });
        if (!data) {
            return written.substr(written.rfind(": ") + 2);
        }
        return Tests::reasonOfException([&] {
            if (const auto back =
                    NS::as<ArchivedRecord>(NS::KeyedUnarchiver::unarchiveObjectWithData(*data))) {
                letGo(*back);
            }
        });
    }

    // Takes records apart that hold each other.
    static void letGo(ArchivedRecord& record) {
        std::vector<NS::RefPtr<ArchivedRecord>> held{&record};
        while (!held.empty()) {
            const auto next = std::move(held.back());
            held.pop_back();
            for (const auto& object : {next->first(), next->second()}) {
                if (auto another = NS::as<ArchivedRecord>(object)) {
                    held.push_back(std::move(another));
                }
            }
            next->setFirst(nullptr);
            next->setSecond(nullptr);
        }
    }

    static NS::Ref<NS::Object> nested(std::size_t depth, NS::Ref<NS::Object> innermost) {
        for (std::size_t i = 0; i < depth; ++i) {
            innermost = NS::Array::arrayWithObjects({innermost});
        }
        return innermost;
    }

    // Records in a row, each the next one's first, and the first of them also at hand in a list.
    static std::vector<NS::Ref<ArchivedRecord>> chain(std::size_t length) {
        std::vector<NS::Ref<ArchivedRecord>> records;
        for (std::size_t i = 0; i < length; ++i) {
            records.push_back(NS::make<ArchivedRecord>());
            if (i > 0) {
                records[i - 1]->setFirst(records[i]);
            }
        }
        return records;
    }
};

constexpr const char* kTooDeep = "objects stand too deep within one another";

// By the list each record is near; by the chain the last one is not.
TEST_F(ArchiveNesting, IsThatOfTheLongestPath) {
    for (const auto& [length, expected] : {std::pair(511, "none"), std::pair(512, kTooDeep)}) {
        const auto records = chain(static_cast<std::size_t>(length));
        const std::vector<NS::Ref<NS::Object>> reversed(records.rbegin(), records.rend());
        const std::vector<NS::Ref<NS::Object>> forward(records.begin(), records.end());
        EXPECT_EQ(trip(NS::make<NS::Array>(forward)), expected) << length;
        EXPECT_EQ(trip(NS::make<NS::Array>(reversed)), expected) << length;
        letGo(*records.front());
    }
}

// The null is met on the second level and again on the last.
TEST_F(ArchiveNesting, CountsAnObjectThatWasMetBefore) {
    const auto null = NS::Null::null();
    EXPECT_EQ(trip(NS::Array::arrayWithObjects({null, nested(510, null)})), "none");
    EXPECT_EQ(trip(NS::Array::arrayWithObjects({null, nested(511, null)})), kTooDeep);
    const auto text = NS::str("text");
    EXPECT_EQ(trip(NS::Array::arrayWithObjects({text, nested(511, text)})), "none");
}

// From either neighbour it is half as far as around.
TEST_F(ArchiveNesting, GoesAroundARing) {
    for (const auto& [length, expected] : {std::pair(512, "none"), std::pair(513, kTooDeep)}) {
        const auto records = chain(static_cast<std::size_t>(length));
        for (std::size_t i = 0; i < records.size(); ++i) {
            records[i]->setSecond(records[(i + records.size() - 1) % records.size()]);
        }
        EXPECT_EQ(trip(records.front()), expected) << length;
        letGo(*records.front());
    }
}

TEST_F(ArchiveNesting, LetsManyHoldTheOneThatHoldsThem) {
    const auto list = NS::make<NS::MutableArray>();
    const auto root = NS::make<ArchivedRecord>();
    root->setSecond(list);
    for (int i = 0; i < 2000; ++i) {
        const auto child = NS::make<ArchivedRecord>();
        child->setSecond(root);
        list->addObject(child);
    }
    const auto data = NS::KeyedArchiver::archivedDataWithRootObject(root);
    const auto back = NS::as<ArchivedRecord>(NS::KeyedUnarchiver::unarchiveObjectWithData(*data));
    const auto children = NS::as<NS::MutableArray>(back->second());
    ASSERT_EQ(children->count(), 2000U);
    const auto last = NS::as<ArchivedRecord>(NS::RefPtr<NS::Object>(children->objectAtIndex(1999)));
    EXPECT_EQ(last->second(), back);
    children->removeAllObjects();
    list->removeAllObjects();
}

TEST_F(ArchiveNesting, RefusesAnErrorThatHoldsItself) {
    const auto holder = NS::make<NS::MutableArray>();
    const auto error = NS::make<NS::Error>(NS::str("Domain"), 1,
                                           NS::Dictionary::dictionaryWithEntries({
                                               {"k", holder}
    }));
    holder->addObject(error);
    EXPECT_EQ(trip(error), "an object holds itself that is only made of what it holds");
    holder->removeAllObjects();
}

TEST_F(ArchiveNesting, RefusesACollectionAmongItsOwnKeysOrMembers) {
    const auto set = NS::make<NS::MutableSet>();
    const auto array = NS::make<NS::MutableArray>();
    set->addObject(array);
    array->addObject(set);
    EXPECT_EQ(trip(array), "a collection is its own key or member");
    array->removeAllObjects();
    const auto value = NS::make<NS::MutableDictionary>();
    value->setObject_forKey(value, "itself");
    EXPECT_EQ(Tests::nameOfException([&] {
                  const auto back = NS::KeyedUnarchiver::unarchiveObjectWithData(
                      *NS::KeyedArchiver::archivedDataWithRootObject(value));
                  NS::as<NS::MutableDictionary>(back)->removeAllObjects();
              }),
              "none");
    value->removeAllObjects();
}

// Records that refer to the next one and to any other: some too deep, none unreadable.
TEST_F(ArchiveNesting, SaysOfAnyRecordsWhetherTheyCanBeRead) {
    std::mt19937 random(1);
    std::map<std::string, int> outcomes;
    for (int round = 0; round < 200; ++round) {
        const std::size_t length = 400 + random() % 400;
        const auto records = chain(length);
        for (const auto& record : records) {
            record->setSecond(records[random() % length]);
            if (random() % 50 == 0) {
                record->setFirst(records[random() % length]);
            }
        }
        ++outcomes[trip(records.front())];
        for (const auto& record : records) {
            record->setFirst(nullptr);
            record->setSecond(nullptr);
        }
    }
    EXPECT_GT(outcomes["none"], 20);
    EXPECT_GT(outcomes[kTooDeep], 20);
    EXPECT_EQ(outcomes["none"] + outcomes[kTooDeep], 200);
}

TEST_F(ArchiveNesting, LetsARecordBeAMemberOfWhatItHolds) {
    const auto record = NS::make<ArchivedRecord>();
    record->setSecond(NS::Set::setWithObject(record));
    EXPECT_EQ(trip(record), "none");
    record->setSecond(nullptr);
}

} // namespace
