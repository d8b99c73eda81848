#include "QVApi/Content/QVFileItem.h"
#include "QVApi/Content/QVFolderItem.h"
#include "QVApi/Content/QVFolderListItem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

namespace {

using NS::str;

template <class Entry>
NS::Ref<Entry> named(const NS::RefPtr<NS::String>& name) {
    auto entry = NS::make<Entry>();
    entry->setName(name);
    return entry;
}

// Looking at every entry each time would take many minutes.
TEST(FolderListInsertion, FillsAListingOfHundredsOfThousands) {
    constexpr std::size_t kFiles = 300'000;
    constexpr std::size_t kFolders = 30'000;
    const auto listing = NS::make<QVFolderListItem>();
    const auto name = str("the very same");
    listing->insertItem(named<QVFileItem>(name));
    for (std::size_t i = 0; i < kFiles; ++i) {
        listing->insertItem(named<QVFileItem>(str("same")));
        if (i < kFolders) {
            listing->insertItem(named<QVFolderItem>(str("same")));
        }
    }
    listing->insertItem(named<QVFileItem>(name));
    EXPECT_EQ(listing->combinedItems()->count(), kFiles + kFolders + 1);
    EXPECT_FALSE(listing->combinedItems()->objectAtIndex(kFolders)->isEqualTo(
        listing->combinedItems()->objectAtIndex(kFolders + kFiles).get()));
}

// A listing of files whose owner inserts, adds and removes, exchanges the list and renames entries
// by chance, with few names, in use or not, or none; and beside it what is to be in it, kept by the
// rule itself without anything to make it quick.
class InsertionByChance : public testing::Test {
  protected:
    void step() {
        switch (random() % 16) {
        case 0:
            return addDirectly();
        case 1:
            return listing->setFiles(files()->mutableCopy());
        case 2:
            return renameOne();
        case 3:
            return removeOne();
        case 4:
            return insert(expected.empty() ? newFile() : expected[anyPlace()]);
        case 5:
            return random() % 4 == 0 ? clear() : listing->removeItemNamed(*str("none"));
        default:
            return insert(newFile());
        }
    }
    bool isAsExpected() const { return std::ranges::equal(*files(), expected); }

  private:
    NS::Ref<NS::MutableArray> files() const {
        return NS::Ref<NS::MutableArray>(*NS::cast<NS::MutableArray>(listing->files()));
    }
    NS::RefPtr<NS::String> anyName() {
        const std::size_t chosen = random() % (names.size() + 4);
        if (chosen < names.size()) {
            return names[chosen];
        }
        return random() % 64 == 0 ? nullptr : NS::RefPtr<NS::String>(str("n"));
    }
    NS::Ref<NS::Object> newFile() { return named<QVFileItem>(anyName()); }
    std::size_t anyPlace() { return random() % expected.size(); }

    void insert(const NS::Ref<NS::Object>& entry) {
        const NS::Ref<NS::Object> held = entry; // it stands in what is about to move
        listing->insertItem(held);
        std::erase_if(expected, [&](const auto& each) { return each->isEqualTo(held.get()); });
        expected.push_back(held);
    }
    void addDirectly() {
        expected.push_back(newFile());
        files()->addObject(expected.back());
    }
    void renameOne() {
        if (!expected.empty()) {
            expected[anyPlace()]->setValue_forKey(anyName(), *str("name"));
        }
    }
    void removeOne() {
        if (!expected.empty()) {
            const std::size_t place = anyPlace();
            files()->removeObjectAtIndex(place);
            expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(place));
        }
    }

    void clear() {
        files()->removeAllObjects();
        expected.clear();
    }

    std::mt19937 random{20};
    const std::vector<NS::Ref<NS::String>> names = {str("n"), str("n"), str("n"),
                                                    str("n"), str("n"), str("n")};
    std::vector<NS::Ref<NS::Object>> expected;
    const NS::Ref<QVFolderListItem> listing = NS::make<QVFolderListItem>();
};

TEST_F(InsertionByChance, FollowsItsRuleWhateverElseHappensToTheList) {
    for (int i = 0; i < 4'000; ++i) {
        step();
        ASSERT_TRUE(isAsExpected()) << "after step " << i;
    }
}

} // namespace
