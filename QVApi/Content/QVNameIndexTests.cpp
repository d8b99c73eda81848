#include "QVApi/Content/QVNameIndex.h"

#include "Platform/Foundation/String.h"
#include "QVApi/Content/QVFileItem.h"

#include <gtest/gtest.h>

namespace {

using NS::str;

NS::RefPtr<NS::Object> nameOfFile(const NS::Object& entry) {
    const auto* const file = NS::as<QVFileItem>(&entry);
    return file != nullptr ? file->name() : nullptr;
}

NS::Ref<QVFileItem> fileOf(const NS::RefPtr<NS::String>& name) {
    auto file = NS::make<QVFileItem>();
    file->setName(name);
    return file;
}

// An index that two insertions in a row have made, of a list of two files.
class NameIndex : public testing::Test {
  protected:
    NameIndex() {
        insert(first);
        insert(fileOf(str("second")));
    }

    // Puts a file at the list's end; what the index knew of its name.
    bool insert(const NS::Ref<QVFileItem>& file) {
        const bool replacesNone = index.replacesNone(*list, file->name());
        list->addObject(file);
        index.inserted(*list);
        return replacesNone;
    }
    bool insertNew() { return insert(fileOf(str("new"))); }

    const NS::Ref<NS::MutableArray> list = NS::make<NS::MutableArray>();
    const NS::Ref<NS::String> name = str("first");
    const NS::Ref<QVFileItem> first = fileOf(name);
    QVNameIndex index{&nameOfFile};
};

TEST_F(NameIndex, KnowsFromTheSecondInsertionInARow) {
    const auto other = NS::make<NS::MutableArray>();
    QVNameIndex fresh(&nameOfFile);
    EXPECT_FALSE(fresh.replacesNone(*other, name));
    fresh.inserted(*other);
    EXPECT_TRUE(fresh.replacesNone(*other, name));
}

TEST_F(NameIndex, TellsNamesApartByTheObject) {
    EXPECT_FALSE(insert(fileOf(name)));
    EXPECT_TRUE(insert(fileOf(str("first"))));
    EXPECT_TRUE(insertNew());
}

TEST_F(NameIndex, KnowsTheNamesThatItWasToldOfItself) {
    const auto fresh = str("fresh");
    EXPECT_TRUE(insert(fileOf(fresh)));
    EXPECT_FALSE(insert(fileOf(fresh)));
}

TEST_F(NameIndex, KnowsNothingOnceTheListHasChanged) {
    EXPECT_TRUE(insertNew());
    list->addObject(fileOf(str("by its owner")));
    EXPECT_FALSE(insertNew());
    EXPECT_TRUE(insertNew());
    list->removeObjectAtIndex(1);
    EXPECT_FALSE(insertNew());
    EXPECT_TRUE(insertNew());
}

TEST_F(NameIndex, LearnsTheNamesThatAChangeBroughtIn) {
    const auto brought = str("brought in");
    list->addObject(fileOf(brought));
    EXPECT_FALSE(insertNew());
    EXPECT_FALSE(insert(fileOf(brought)));
    EXPECT_TRUE(insertNew());
}

TEST_F(NameIndex, KnowsNothingOnceAnEntryIsRenamed) {
    const auto renamed = str("renamed");
    first->setName(renamed);
    EXPECT_FALSE(insert(fileOf(str("a"))));
    EXPECT_FALSE(insert(fileOf(renamed)));
    EXPECT_TRUE(insert(fileOf(name)));
    first->setValue_forKey(name, *str("name"));
    EXPECT_FALSE(insertNew());
}

TEST_F(NameIndex, KnowsNothingOfAnotherList) {
    const auto other = list->mutableCopy();
    EXPECT_FALSE(index.replacesNone(*other, str("new")));
}

// Two entries without a name are equal, whatever the index holds.
TEST_F(NameIndex, NeverKnowsAListWithAnEntryWithoutAName) {
    EXPECT_FALSE(insert(fileOf(nullptr)));
    EXPECT_FALSE(insertNew());
    EXPECT_FALSE(insertNew());
    list->removeObjectAtIndex(2);
    EXPECT_FALSE(insertNew());
    EXPECT_TRUE(insertNew());
    first->setName(nullptr);
    EXPECT_FALSE(insertNew());
    EXPECT_FALSE(insertNew());
}

TEST_F(NameIndex, NeverKnowsAListWithAnEntryOfAnotherKind) {
    list->addObject(NS::make<QVContentItem>());
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(insertNew());
    }
}

} // namespace
