#include "QVApi/Content/QVNameIndex.h"

#include "Platform/Foundation/String.h"
#include "QVApi/Content/QVFileItem.h"

#include <gtest/gtest.h>

#include <algorithm>

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

// An index that knows the names of a list.
class NameIndex : public testing::Test {
  protected:
    NameIndex() {
        insert(first);
        looksUntilItKnows();
    }

    // Puts a file at the list's end; what the index knew of its name.
    bool insert(const NS::Ref<QVFileItem>& file) {
        const bool replacesNone = index.replacesNone(*list, file->name());
        const bool isInUse = std::ranges::any_of(
            *list, [&](const auto& each) { return nameOfFile(*each) == file->name(); });
        if (!replacesNone && !isInUse) {
            index.lookedInVain();
        }
        list->addObject(file);
        index.inserted(*list);
        return replacesNone;
    }
    bool insertNew() { return insert(fileOf(str("new"))); }
    // Inserts new files until it knows their names, at most three times as many as it should take.
    int looksUntilItKnows() {
        int looks = 0;
        while (looks < 3 * QVNameIndex::kVainLooks && !insertNew()) {
            ++looks;
        }
        return looks;
    }
    bool neverKnows() { return looksUntilItKnows() == 3 * QVNameIndex::kVainLooks; }

    const NS::Ref<NS::MutableArray> list = NS::make<NS::MutableArray>();
    const NS::Ref<NS::String> name = str("first");
    const NS::Ref<QVFileItem> first = fileOf(name);
    QVNameIndex index{&nameOfFile};
};

TEST_F(NameIndex, KnowsAfterAFewInsertionsInARow) {
    index = QVNameIndex(&nameOfFile);
    EXPECT_EQ(looksUntilItKnows(), QVNameIndex::kVainLooks);
    EXPECT_TRUE(insertNew());
}

// No index would have spared the look.
TEST_F(NameIndex, TakesNoInsertionThatReplacesForALookInVain) {
    index = QVNameIndex(&nameOfFile);
    for (int i = 0; i < 3 * QVNameIndex::kVainLooks; ++i) {
        EXPECT_FALSE(insert(fileOf(name)));
    }
    EXPECT_EQ(looksUntilItKnows(), QVNameIndex::kVainLooks);
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
    EXPECT_EQ(looksUntilItKnows(), QVNameIndex::kVainLooks);
    list->removeObjectAtIndex(1);
    EXPECT_EQ(looksUntilItKnows(), QVNameIndex::kVainLooks);
}

TEST_F(NameIndex, LearnsTheNamesThatAChangeBroughtIn) {
    const auto brought = str("brought in");
    list->addObject(fileOf(brought));
    looksUntilItKnows();
    EXPECT_FALSE(insert(fileOf(brought)));
    EXPECT_TRUE(insertNew());
}

TEST_F(NameIndex, KnowsNothingOnceAnEntryIsRenamed) {
    const auto renamed = str("renamed");
    first->setName(renamed);
    EXPECT_EQ(looksUntilItKnows(), QVNameIndex::kVainLooks);
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
    EXPECT_TRUE(neverKnows());
}

TEST_F(NameIndex, KnowsAgainOnceAnEntryWithoutANameIsGone) {
    const std::size_t place = list->count();
    list->addObject(fileOf(nullptr));
    EXPECT_TRUE(neverKnows());
    list->removeObjectAtIndex(place);
    EXPECT_EQ(looksUntilItKnows(), QVNameIndex::kVainLooks);
    first->setName(nullptr);
    EXPECT_TRUE(neverKnows());
}

TEST_F(NameIndex, NeverKnowsAListWithAnEntryOfAnotherKind) {
    list->addObject(NS::make<QVContentItem>());
    EXPECT_TRUE(neverKnows());
}

} // namespace
