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

// The name of a file says nothing to a folder that an owner put among the files.
TEST(FolderListInsertion, ReplacesAnEntryOfTheOtherKindByItsIdentifierOnly) {
    const auto name = str("n");
    const auto identifier = str("i");
    const auto listing = NS::make<QVFolderListItem>();
    const auto sameName = named<QVFolderItem>(name);
    sameName->setIdentifier(str("i"));
    const auto sameIdentifier = named<QVFolderItem>(str("n"));
    sameIdentifier->setIdentifier(identifier);
    const auto files = NS::cast<NS::MutableArray>(listing->files());
    files->addObject(sameName);
    files->addObject(sameIdentifier);
    const auto file = named<QVFileItem>(name);
    file->setIdentifier(identifier);
    listing->insertItem(file);
    EXPECT_TRUE(files->isEqual(NS::Array::arrayWithObjects({sameName, file}).get()));
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
// rule itself without anything to make it quick. On demand the owner adds folders among the files,
// which only a file of the same identifier replaces. Mostly it inserts, so that there are rows of
// insertions.
class InsertionByChance : public testing::Test {
  protected:
    void step() {
        switch (random() % 48) {
        case 0:
            return addDirectly();
        case 1:
            return listing->setFiles(files()->mutableCopy());
        case 2:
            return renameOne();
        case 3:
            return removeOne();
        case 4:
            return insert(anyFile());
        case 5:
            return random() % 4 == 0 ? clear() : listing->removeItemNamed(*str("none"));
        default:
            return insert(newFile());
        }
    }
    bool addsFolders = false;
    bool hasFolders() const {
        return std::ranges::any_of(expected, [](const auto& each) {
            return static_cast<bool>(NS::as<QVFolderItem>(each));
        });
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
    template <class Entry>
    NS::Ref<NS::Object> newEntry() {
        const auto entry = named<Entry>(anyName());
        if (addsFolders && random() % 16 != 0) {
            entry->setIdentifier(identifiers[random() % identifiers.size()]);
        }
        return entry;
    }
    NS::Ref<NS::Object> newFile() { return newEntry<QVFileItem>(); }
    NS::Ref<NS::Object> anyFile() {
        const auto entry = expected.empty() ? newFile() : expected[anyPlace()];
        return NS::as<QVFileItem>(entry) ? entry : newFile();
    }
    std::size_t anyPlace() { return random() % expected.size(); }

    void insert(const NS::Ref<NS::Object>& entry) {
        const NS::Ref<NS::Object> held = entry; // it stands in what is about to move
        listing->insertItem(held);
        std::erase_if(expected, [&](const auto& each) { return each->isEqualTo(held.get()); });
        expected.push_back(held);
    }
    void addDirectly() {
        const bool isFolder = addsFolders && random() % 2 == 0;
        expected.push_back(isFolder ? newEntry<QVFolderItem>() : newFile());
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
    const std::vector<NS::Ref<NS::String>> identifiers = {str("i"), str("i"), str("i"), str("i"),
                                                          str("i"), str("i"), str("i"), str("i")};
    std::vector<NS::Ref<NS::Object>> expected;
    const NS::Ref<QVFolderListItem> listing = NS::make<QVFolderListItem>();
};

TEST_F(InsertionByChance, FollowsItsRuleWhateverElseHappensToTheList) {
    for (int i = 0; i < 12'000; ++i) {
        step();
        ASSERT_TRUE(isAsExpected()) << "after step " << i;
    }
}

TEST_F(InsertionByChance, FollowsTheRuleOfIdentifiersForFoldersAmongTheFiles) {
    addsFolders = true;
    int steps = 0; // that found a folder there
    for (int i = 0; i < 12'000; ++i) {
        steps += hasFolders() ? 1 : 0;
        step();
        ASSERT_TRUE(isAsExpected()) << "after step " << i;
    }
    EXPECT_GT(steps, 400);
}

} // namespace
