#include "Platform/Foundation/Property.h"

#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

class Record : public NS::Object {
    NS_OBJECT(Record)
  public:
    NS_RECORD_PROPERTY(NS::String, title, setTitle)
    NS_RECORD_SCALAR(double, time, setTime)
    NS_RECORD_SCALAR(bool, marked, setMarked)
};

class DerivedRecord final : public Record {
    NS_OBJECT(DerivedRecord)
  public:
    NS_RECORD_PROPERTY(NS::Number, size, setSize)
};

constexpr auto kRecordProperties = NS::propertiesOf<Record>();
constexpr auto kDerivedProperties = NS::propertiesOf<DerivedRecord>();

constinit const NS::Class Record::kClass{
    .name = "Record", .superclass = &NS::Object::kClass, .properties = kRecordProperties};
constinit const NS::Class DerivedRecord::kClass{
    .name = "DerivedRecord", .superclass = &Record::kClass, .properties = kDerivedProperties};

using Tests::nameOfException;

TEST(Property, StandsInTheClassInItsDeclaredOrder) {
    ASSERT_EQ(kRecordProperties.size(), 3U);
    EXPECT_EQ(kRecordProperties[0].key, "title");
    EXPECT_EQ(kRecordProperties[1].key, "time");
    EXPECT_EQ(kRecordProperties[2].key, "marked");
    ASSERT_EQ(kDerivedProperties.size(), 1U);
}

TEST(Property, IsReachedByItsKeyAlsoInASubclass) {
    const auto record = NS::make<DerivedRecord>();
    const auto title = NS::str("Docs");
    record->setValue_forKey(title, NS::str("title"));
    EXPECT_EQ(record->valueForKey(NS::str("title")), NS::RefPtr<NS::Object>(title));
    EXPECT_EQ(record->title(), NS::RefPtr<NS::Object>(title));
}

TEST(Property, BoxesAScalar) {
    const auto record = NS::make<Record>();
    record->setTime(1.5);
    EXPECT_EQ(record->valueForKey(NS::str("time"))->description()->utf8(), "1.5");
    record->setValue_forKey(NS::Number::numberWithInt(1), NS::str("marked"));
    EXPECT_TRUE(record->marked());
}

TEST(Property, RaisesForAnUnknownKey) {
    const auto record = NS::make<Record>();
    EXPECT_EQ(nameOfException([&] { (void)record->valueForKey(NS::str("other")); }),
              NS::kUnknownKeyException);
    EXPECT_EQ(nameOfException([&] { record->setValue_forKey(nullptr, NS::str("other")); }),
              NS::kUnknownKeyException);
}

TEST(Property, RaisesForNilIntoAScalar) {
    const auto record = NS::make<Record>();
    EXPECT_EQ(nameOfException([&] { record->setValue_forKey(nullptr, NS::str("marked")); }),
              NS::kInvalidArgumentException);
}

TEST(Property, RaisesForAValueThatIsNoScalar) {
    const auto record = NS::make<Record>();
    EXPECT_EQ(
        nameOfException([&] { record->setValue_forKey(NS::make<Record>(), NS::str("time")); }),
        NS::kInvalidArgumentException);
    EXPECT_EQ(record->time(), 0.0);
}

TEST(Property, ReadsAScalarFromAText) {
    const auto record = NS::make<Record>();
    record->setValue_forKey(NS::str("2.5"), NS::str("time"));
    record->setValue_forKey(NS::str("yes"), NS::str("marked"));
    EXPECT_EQ(record->time(), 2.5);
    EXPECT_TRUE(record->marked());
}

// A storage that keeps a second reference to what it was given last.
class DoubleStorage {
  public:
    NS::RefPtr<NS::Object> load() const { return object_.load(); }
    void store(const NS::RefPtr<NS::Object>& object) {
        object_.store(object);
        copy_ = object;
    }
    void storeUnshared(const NS::RefPtr<NS::Object>& object) { store(object); }
    const NS::AtomicRef<NS::Object>& reference() const { return object_; }

  private:
    NS::AtomicRef<NS::Object> object_;
    NS::RefPtr<NS::Object> copy_;
};

class RecordWithStorage final : public NS::Object {
    NS_OBJECT(RecordWithStorage)
  public:
    NS_RECORD_PROPERTY_IN(DoubleStorage, NS::String, title, setTitle)
};

constexpr auto kStorageProperties = NS::propertiesOf<RecordWithStorage>();
constinit const NS::Class RecordWithStorage::kClass{.name = "RecordWithStorage",
                                                    .superclass = &NS::Object::kClass,
                                                    .properties = kStorageProperties};

TEST(Property, CanHaveAStorageOfItsOwn) {
    const auto record = NS::make<RecordWithStorage>();
    const auto title = NS::str("Docs");
    record->setTitle(title);
    EXPECT_EQ(record->title(), title);
    record->setValue_forKey(NS::str("Music"), NS::str("title"));
    EXPECT_EQ(record->valueForKey(NS::str("title"))->description()->utf8(), "Music");
    EXPECT_EQ(title->referenceCount(), 1U);
    record->setTitle(title);
    EXPECT_EQ(title->referenceCount(), 3U);
}

// What looks at a property's object without a reference to it must find it alive.
TEST(Property, ShowsWhatItHoldsWithoutAnotherReference) {
    const auto record = NS::make<Record>();
    const auto& reference = kRecordProperties[0].reference(*record);
    reference.whileHeld([](const NS::Object* value) { EXPECT_EQ(value, nullptr); });
    const auto title = NS::str("Docs");
    record->setTitle(title);
    reference.whileHeld([&](const NS::Object* value) {
        EXPECT_EQ(value, title.get());
        EXPECT_EQ(title->referenceCount(), 2U);
    });
    EXPECT_EQ(kRecordProperties[1].reference, nullptr);
}

TEST(Property, HoldsWhateverObjectItIsGivenByItsKey) {
    const auto record = NS::make<Record>();
    const NS::Ref<NS::Object> other = NS::make<Record>();
    record->setValue_forKey(other, NS::str("title"));
    EXPECT_EQ(record->title(), NS::RefPtr<NS::Object>(other));
    EXPECT_EQ(other->referenceCount(), 2U);
    record->setTitle(nullptr);
    EXPECT_EQ(record->title(), nullptr);
    EXPECT_EQ(other->referenceCount(), 1U);
}

TEST(AtomicRef, HoldsOneReferenceUntilItEnds) {
    const auto text = NS::str("text");
    {
        NS::AtomicRef<NS::String> reference;
        EXPECT_EQ(reference.load(), nullptr);
        reference.store(text);
        EXPECT_EQ(text->referenceCount(), 2U);
        EXPECT_EQ(reference.load(), NS::RefPtr<NS::String>(text));
        reference.store(text);
        EXPECT_EQ(text->referenceCount(), 2U);
    }
    EXPECT_EQ(text->referenceCount(), 1U);
}

TEST(AtomicRef, ShowsItsObjectWithoutTakingAReference) {
    const auto text = NS::str("text");
    NS::AtomicRef<NS::String> reference;
    EXPECT_EQ(reference.peek(), nullptr);
    reference.store(text);
    EXPECT_EQ(reference.peek(), text.get());
    reference.whileHeld([&](const NS::String* held) { EXPECT_EQ(reference.peek(), held); });
    EXPECT_EQ(text->referenceCount(), 2U);
}

TEST(AtomicRef, GivesWhatAnExchangeTakesThePlaceOf) {
    const auto text = NS::str("text");
    NS::AtomicRef<NS::String> reference;
    EXPECT_EQ(reference.exchange(text), nullptr);
    EXPECT_EQ(reference.exchange(nullptr), NS::RefPtr<NS::String>(text));
    EXPECT_EQ(reference.load(), nullptr);
    EXPECT_EQ(text->referenceCount(), 1U);
}

// Reads the reference that it stands in while it ends.
class LateReader final : public NS::Object {
  public:
    explicit LateReader(NS::AtomicRef<NS::Object>& reference) noexcept : reference_(reference) {}
    ~LateReader() override { reference_.store(nullptr); }

  private:
    NS::AtomicRef<NS::Object>& reference_;
};

TEST(AtomicRef, LetsAnObjectThatItReleasesUseIt) {
    NS::AtomicRef<NS::Object> reference;
    reference.store(NS::make<LateReader>(reference));
    reference.store(NS::str("next"));
    EXPECT_EQ(reference.load(), nullptr);
}

TEST(AtomicRef, LosesNothingWhenSeveralThreadsStore) {
    const auto text = NS::str("shared");
    {
        NS::AtomicRef<NS::String> reference;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < 5000; ++round) {
                    reference.store(text);
                    (void)reference.load();
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(text->referenceCount(), 2U);
    }
    EXPECT_EQ(text->referenceCount(), 1U);
}

TEST(AtomicRef, KeepsAReadValueAliveAcrossAConcurrentStore) {
    NS::AtomicRef<NS::String> reference;
    reference.store(NS::str("0"));
    std::thread writer([&] {
        for (int i = 0; i < 20000; ++i) {
            reference.store(NS::str(std::to_string(i)));
        }
    });
    std::size_t characters = 0;
    for (int i = 0; i < 20000; ++i) {
        characters += reference.load()->length();
    }
    writer.join();
    EXPECT_GE(characters, 20000U);
    EXPECT_EQ(reference.load()->utf8(), "19999");
    EXPECT_EQ(reference.load()->referenceCount(), 2U);
}

} // namespace
