#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using NS::Array;
using NS::Dictionary;
using NS::MutableDictionary;
using NS::str;

class Folder final : public NS::Object {
    NS_OBJECT(Folder)
  public:
    NS_RECORD_PROPERTY(NS::String, name, setName)
    NS_RECORD_PROPERTY(NS::Object, parent, setParent)
    NS_RECORD_SCALAR(bool, shared, setShared)
};

constexpr auto kFolderProperties = NS::propertiesOf<Folder>();
constinit const NS::Class Folder::kClass{
    .name = "Folder", .superclass = &NS::Object::kClass, .properties = kFolderProperties};

NS::Ref<Folder> folder(const char* name) {
    const auto result = NS::make<Folder>();
    result->setName(str(name));
    return result;
}

std::string valueOf(const NS::Object& object, const char* path) {
    return NS::descriptionOf(object.valueForKeyPath(*str(path)).get())->utf8();
}

TEST(KeyValueCoding, ReadsAndSetsProperties) {
    const auto docs = folder("Docs");
    EXPECT_EQ(docs->valueForKey(*str("name"))->description()->utf8(), "Docs");
    docs->setValue_forKey(str("Music"), *str("name"));
    EXPECT_EQ(valueOf(*docs, "name"), "Music");
    EXPECT_EQ(docs->valueForKey(*str("parent")), nullptr);
    EXPECT_EQ(valueOf(*docs, "shared"), "0");
}

TEST(KeyValueCoding, NamesTheObjectAndTheKeyThatItDoesNotHave) {
    const auto docs = folder("Docs");
    const std::string own = docs->description()->utf8(); // "<Folder: 0x…>"
    const std::string instance = "<Folder " + own.substr(own.find("0x"));
    EXPECT_EQ(Tests::reasonOfException([&] { (void)docs->valueForKey(*str("color")); }),
              "[" + instance +
                  " valueForUndefinedKey:]: this class is not key value coding-compliant for the "
                  "key color.");
    EXPECT_EQ(Tests::reasonOfException([&] { docs->setValue_forKey(nullptr, *str("color")); }),
              "[" + instance +
                  " setValue:forUndefinedKey:]: this class is not key value coding-compliant for "
                  "the key color.");
}

TEST(KeyValueCoding, KnowsNoKeysThatAreEmptyOrPathsOrForeign) {
    const auto docs = folder("Docs");
    for (const char* key : {"", "name ", "Name", "parent.name", "n\xC3\xA4me"}) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)docs->valueForKey(*str(key)); }),
                  NS::kUnknownKeyException)
            << key;
    }
}

TEST(KeyValueCoding, NamesTheScalarThatCannotBeNil) {
    const auto docs = folder("Docs");
    const auto act = [&] {
        docs->setValue_forKey(nullptr, *str("shared"));
    };
    EXPECT_EQ(Tests::nameOfException(act), NS::kInvalidArgumentException);
    EXPECT_NE(
        Tests::reasonOfException(act).find("could not set nil as the value for the key shared."),
        std::string::npos);
}

TEST(KeyPath, ReadsThroughObjects) {
    const auto docs = folder("Docs");
    const auto work = folder("Work");
    const auto file = folder("File");
    work->setParent(docs);
    file->setParent(work);
    EXPECT_EQ(valueOf(*file, "parent.parent.name"), "Docs");
    EXPECT_EQ(valueOf(*file, "name"), "File");
}

TEST(KeyPath, IsNilWhereSomethingOnTheWayIs) {
    EXPECT_EQ(folder("Docs")->valueForKeyPath(*str("parent.parent.name")), nullptr);
    const auto docs = folder("Docs");
    docs->setValue_forKeyPath(str("x"), *str("parent.name")); // nothing to set it on
    EXPECT_EQ(docs->parent(), nullptr);
}

TEST(KeyPath, SetsThroughObjects) {
    const auto docs = folder("Docs");
    const auto work = folder("Work");
    work->setParent(docs);
    work->setValue_forKeyPath(str("Papers"), *str("parent.name"));
    EXPECT_EQ(valueOf(*docs, "name"), "Papers");
    work->setValue_forKeyPath(str("Job"), *str("name"));
    EXPECT_EQ(valueOf(*work, "name"), "Job");
}

TEST(KeyPath, RaisesForAnUnknownKeyOnTheWay) {
    const auto work = folder("Work");
    work->setParent(folder("Docs"));
    for (const char* path : {"parent.color", "color.name", "parent.", ".name", "parent..name"}) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)work->valueForKeyPath(*str(path)); }),
                  NS::kUnknownKeyException)
            << path;
        EXPECT_EQ(Tests::nameOfException([&] { work->setValue_forKeyPath(nullptr, *str(path)); }),
                  NS::kUnknownKeyException)
            << path;
    }
}

TEST(KeyValueCodingOfADictionary, GivesTheValueUnderTheKey) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"a", str("1")}
    });
    EXPECT_EQ(valueOf(*dictionary, "a"), "1");
    EXPECT_EQ(dictionary->valueForKey(*str("count")), nullptr);
    const auto nested = Dictionary::dictionaryWithEntries({
        {"inner", dictionary}
    });
    EXPECT_EQ(valueOf(*nested, "inner.a"), "1");
    EXPECT_EQ(valueOf(*nested, "other.a"), "(null)");
}

TEST(KeyValueCodingOfADictionary, StoresOrRemovesTheValue) {
    const auto dictionary = NS::make<MutableDictionary>();
    dictionary->setValue_forKey(str("1"), *str("a"));
    EXPECT_EQ(valueOf(*dictionary, "a"), "1");
    dictionary->setValue_forKey(nullptr, *str("a"));
    EXPECT_EQ(dictionary->count(), 0U);
    dictionary->setValue_forKey(nullptr, *str("a"));
    EXPECT_EQ(dictionary->count(), 0U);
}

TEST(KeyValueCodingOfADictionary, SetsAlongAPath) {
    const auto inner = NS::make<MutableDictionary>();
    const auto outer = Dictionary::dictionaryWithEntries({
        {"inner", inner}
    });
    outer->setValue_forKeyPath(str("1"), *str("inner.a"));
    EXPECT_EQ(valueOf(*inner, "a"), "1");
}

TEST(KeyValueCodingOfADictionary, CannotSetInOneThatDoesNotChange) {
    const auto dictionary = Dictionary::dictionaryWithEntries({
        {"a", str("1")}
    });
    EXPECT_EQ(Tests::nameOfException([&] { dictionary->setValue_forKey(str("2"), *str("a")); }),
              NS::kUnknownKeyException);
}

TEST(KeyValueCodingOfAnArray, GivesTheElementsValues) {
    const auto named = folder("Docs");
    const auto unnamed = NS::make<Folder>();
    const auto names =
        NS::as<Array>(Array::arrayWithObjects({named, unnamed})->valueForKey(*str("name")));
    ASSERT_EQ(names->count(), 2U);
    EXPECT_EQ(names->objectAtIndex(0)->description()->utf8(), "Docs");
    EXPECT_EQ(names->objectAtIndex(1), NS::Ref<NS::Object>(NS::Null::null()));
    EXPECT_EQ(&names->objectClass(), &Array::kClass);
}

TEST(KeyValueCodingOfAnArray, SetsTheValueOnEachElement) {
    const auto a = folder("a");
    const auto b = folder("b");
    Array::arrayWithObjects({a, b})->setValue_forKey(str("same"), *str("name"));
    EXPECT_EQ(valueOf(*a, "name") + valueOf(*b, "name"), "samesame");
}

TEST(KeyValueCodingOfAnArray, RaisesWhenAnElementDoesNotHaveTheKey) {
    const auto mixed = Array::arrayWithObjects({folder("a"), str("text")});
    EXPECT_EQ(Tests::nameOfException([&] { (void)mixed->valueForKey(*str("name")); }),
              NS::kUnknownKeyException);
}

} // namespace
