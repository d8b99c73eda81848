#include "QVApi/Content/QVContentClasses.h"

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Testing/ArchiveText.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVApi/Content/QVAnonymousItem.h"
#include "QVApi/Content/QVContentItem.h"
#include "QVApi/Content/Testing/ContentTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

std::string text(const NS::RefPtr<NS::Object>& object) {
    return NS::descriptionOf(object.get())->utf8();
}

NS::RefPtr<NS::Object> restored(const NS::RefPtr<NS::Object>& object) {
    return NS::KeyedUnarchiver::unarchiveObjectWithData(
        *NS::KeyedArchiver::archivedDataWithRootObject(object));
}

TEST(ContentClasses, AreAllThatAreExpected) {
    std::vector<std::string_view> names;
    for (const QVContentClass* const each : qvContentClasses()) {
        names.emplace_back(each->objectClass.name);
    }
    std::vector<std::string_view> expected;
    for (const Tests::ExpectedClass& each : Tests::expectedClasses()) {
        expected.push_back(each.name);
    }
    EXPECT_EQ(names.size(), 27U);
    EXPECT_TRUE(std::ranges::is_permutation(names, expected));
}

TEST(ContentClasses, AreAllThatArchivesKnow) {
    std::set<std::string> known;
    NS::forEachClass([&](const NS::Class& each) {
        if (std::string_view(each.name).starts_with("QV")) {
            known.insert(each.name);
        }
    });
    std::set<std::string> listed;
    for (const QVContentClass* const each : qvContentClasses()) {
        listed.insert(each->objectClass.name);
    }
    EXPECT_EQ(known, listed);
}

// One class of the content model, against what is written down of it in Testing/ContentTables.cpp.
class ContentClass : public testing::TestWithParam<const QVContentClass*> {
  protected:
    const QVContentClass& itemClass = *GetParam();
    const Tests::ExpectedClass& expected = Tests::expectedClass(itemClass.objectClass.name);
    const std::vector<const NS::Property*> properties = Tests::allPropertiesOf(itemClass);

    // An item with another text in every property, or true and 0.5 where it has no place for one.
    NS::Ref<QVContentItem> filledItem() const {
        auto item = itemClass.create();
        for (const NS::Property* const each : properties) {
            if (!each->isScalar) {
                each->set(*item, NS::str("the " + std::string(each->key)));
            }
        }
        item->setTimeReceived(0.5);
        if (const auto* const encrypted = scalarNamed("encrypted")) {
            encrypted->set(*item, NS::Number::numberWithBool(true));
        }
        return item;
    }
    const NS::Property* scalarNamed(std::string_view key) const {
        const auto* const property = itemClass.objectClass.propertyForKey(key);
        return property != nullptr && property->isScalar ? property : nullptr;
    }
    bool isArchived(std::string_view key) const {
        return key == "timeReceived" || std::ranges::count(expected.archived, key) != 0;
    }
};

TEST_P(ContentClass, HasItsNameAndChain) {
    EXPECT_EQ(itemClass.objectClass.name, expected.name);
    EXPECT_EQ(itemClass.objectClass.superclass->name, expected.superclass);
    if (itemClass.superclass != nullptr) {
        EXPECT_EQ(&itemClass.superclass->objectClass, itemClass.objectClass.superclass);
    }
    EXPECT_EQ(&itemClass.create()->objectClass(), &itemClass.objectClass);
    EXPECT_EQ(&itemClass.create()->contentClass(), &itemClass);
    EXPECT_EQ(&itemClass.objectClass.createForCoder()->objectClass(), &itemClass.objectClass);
    EXPECT_EQ(NS::classNamed(expected.name), &itemClass.objectClass);
}

TEST_P(ContentClass, DeclaresItsProperties) {
    std::vector<std::string> keys;
    for (const NS::Property& each : itemClass.objectClass.properties) {
        keys.emplace_back(each.key);
    }
    EXPECT_EQ(keys, expected.properties);
}

TEST_P(ContentClass, HasItsMappingTable) {
    const auto mapping = NS::make<NS::MutableDictionary>();
    for (const Tests::ExpectedRow& row : expected.mapping) {
        mapping->setObject_forKey(NS::str(row.reply), row.property);
    }
    const auto actual = QVContentItem::mappingDict(itemClass);
    EXPECT_TRUE(actual->isEqual(mapping.get())) << text(actual);
}

TEST_P(ContentClass, HasItsArchiveList) {
    const auto list = NS::make<NS::MutableArray>();
    for (const std::string& key : expected.archived) {
        list->addObject(NS::str(key));
    }
    const auto actual = QVContentItem::encodeArray(itemClass);
    EXPECT_TRUE(actual->isEqual(list.get())) << text(actual);
}

TEST_P(ContentClass, StartsWithItsInitialisersValues) {
    const auto item = itemClass.create();
    std::map<std::string_view, std::string> values;
    for (const NS::Property* const each : properties) {
        values[each->key] = text(each->get(*item));
    }
    std::map<std::string_view, std::string> wanted;
    for (const NS::Property* const each : properties) {
        wanted[each->key] = each->key == "timeReceived" ? "0" : "(null)";
    }
    for (const auto& [key, description] : expected.initialValues) {
        wanted[key] = description;
    }
    EXPECT_EQ(values, wanted);
}

// Every class but the anonymous item's, whose keys are the reply's.
class KeyedContentClass : public ContentClass {};

TEST_P(KeyedContentClass, IsReadAndSetByKeys) {
    const auto item = filledItem();
    for (const NS::Property* const each : properties) {
        const auto key = NS::str(each->key);
        EXPECT_EQ(text(item->valueForKey(*key)), text(each->get(*item)));
        const NS::Ref<NS::Object> value = NS::Number::numberWithBool(true);
        item->setValue_forKeyPath(value, *key);
        EXPECT_EQ(text(item->valueForKeyPath(*key)), "1") << each->key;
    }
}

TEST_P(KeyedContentClass, RaisesForAKeyThatItDoesNotHave) {
    const auto item = itemClass.create();
    for (const char* const key : {"unknown", "Identifier", "", "description", "hash", "isUnlimited",
                                  "isEncrypted", "isCompleted", "combinedItems", "itemNames"}) {
        EXPECT_EQ(Tests::nameOfException([&] { (void)item->valueForKey(*NS::str(key)); }),
                  NS::kUnknownKeyException);
        EXPECT_EQ(
            Tests::nameOfException([&] { item->setValue_forKey(NS::str("x"), *NS::str(key)); }),
            NS::kUnknownKeyException);
    }
}

TEST_P(ContentClass, TakesNilWhereThereIsRoomForIt) {
    const auto item = filledItem();
    for (const NS::Property* const each : properties) {
        const std::string raised = Tests::nameOfException([&] { each->set(*item, nullptr); });
        if (each->isScalar) {
            EXPECT_EQ(raised, NS::kInvalidArgumentException) << each->key;
        } else {
            EXPECT_EQ(raised, "none") << each->key;
            EXPECT_FALSE(each->get(*item)) << each->key;
        }
    }
}

TEST_P(ContentClass, IsBuiltFromAWholeReply) {
    NS::RefPtr<NS::Error> error;
    const auto reply = Tests::sampleReply(expected);
    const auto item = QVContentItem::itemWithDict_error(itemClass, *reply, &error);
    ASSERT_TRUE(item);
    EXPECT_EQ(&item->objectClass(), &itemClass.objectClass);
    for (const Tests::ExpectedRow& row : expected.mapping) {
        const NS::Property* const property = itemClass.objectClass.propertyForKey(row.property);
        EXPECT_TRUE(property->get(*item)) << row.property;
    }
    EXPECT_FALSE(error);
}

TEST_P(ContentClass, IsArchivedUnderItsNameWithItsList) {
    const std::string list =
        Tests::textOfList(*NS::KeyedArchiver::archivedDataWithRootObject(filledItem()));
    std::string record = "{$class=#2, timeReceived=0.5";
    std::size_t uid = 3;
    for (const std::string& key : expected.archived) {
        record += ", " + key + "=#" + std::to_string(uid++);
    }
    std::string chain = "{$classname=\"" + expected.name + "\", $classes=[";
    for (const NS::Class* c = &itemClass.objectClass; c != nullptr; c = c->superclass) {
        chain += "\"" + std::string(c->name) + (c->superclass == nullptr ? "\"]}" : "\", ");
    }
    EXPECT_NE(list.find(record + "}, " + chain), std::string::npos) << list;
}

TEST_P(ContentClass, ComesBackWithWhatItsListNamesAndNothingElse) {
    const auto item = filledItem();
    const auto back = NS::as<QVContentItem>(restored(item));
    ASSERT_TRUE(back);
    EXPECT_EQ(&back->objectClass(), &itemClass.objectClass);
    for (const NS::Property* const each : properties) {
        const auto value = each->get(*back);
        if (isArchived(each->key)) {
            EXPECT_TRUE(value && value->isEqual(each->get(*item).get())) << each->key;
            EXPECT_TRUE(each->isScalar || value != each->get(*item)) << each->key;
        } else {
            EXPECT_FALSE(value) << each->key;
        }
    }
}

TEST_P(ContentClass, ComesBackFromItsInitialisersValues) {
    const auto item = itemClass.create();
    const auto back = NS::as<QVContentItem>(restored(item));
    ASSERT_TRUE(back);
    for (const NS::Property* const each : properties) {
        const bool isKept = isArchived(each->key) || each->isScalar;
        EXPECT_EQ(text(each->get(*back)), isKept ? text(each->get(*item)) : "(null)") << each->key;
    }
}

TEST_P(ContentClass, ComesBackAsOneObjectWithOneValueWhereItWasOne) {
    const auto item = filledItem();
    const auto other = itemClass.create();
    for (const NS::Property* const each : properties) {
        each->set(*other, each->get(*item)); // the very same objects
    }
    const auto list = NS::as<NS::Array>(restored(NS::Array::arrayWithObjects({item, other, item})));
    const auto& first = *list->objectAtIndex(0);
    EXPECT_EQ(&first, list->objectAtIndex(2).get());
    EXPECT_NE(&first, list->objectAtIndex(1).get());
    for (const NS::Property* const each : properties) {
        if (!each->isScalar) {
            EXPECT_EQ(each->get(first), each->get(*list->objectAtIndex(1))) << each->key;
        }
    }
}

TEST_P(ContentClass, ComesBackWithTwoValuesWhereTheyWereEqual) {
    const auto list =
        NS::as<NS::Array>(restored(NS::Array::arrayWithObjects({filledItem(), filledItem()})));
    for (const NS::Property* const each : properties) {
        const auto value = each->get(*list->objectAtIndex(0));
        if (!each->isScalar && value) {
            EXPECT_TRUE(value->isEqual(each->get(*list->objectAtIndex(1)).get())) << each->key;
            EXPECT_NE(value, each->get(*list->objectAtIndex(1))) << each->key;
        }
    }
}

std::vector<const QVContentClass*> keyedClasses() {
    std::vector<const QVContentClass*> classes(qvContentClasses().begin(),
                                               qvContentClasses().end());
    std::erase(classes, &QVAnonymousItem::kContentClass);
    return classes;
}

std::string nameOfClass(const testing::TestParamInfo<const QVContentClass*>& each) {
    return each.param->objectClass.name;
}

INSTANTIATE_TEST_SUITE_P(, ContentClass,
                         testing::ValuesIn(qvContentClasses().begin(), qvContentClasses().end()),
                         nameOfClass);
INSTANTIATE_TEST_SUITE_P(, KeyedContentClass, testing::ValuesIn(keyedClasses()), nameOfClass);

} // namespace
