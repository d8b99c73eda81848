#include "Programs/FinderExtension/MenuState.h"

#include "QVApi/Content/QVUserInfoItem.h"

#include <gtest/gtest.h>

namespace {

class MenuStates : public testing::Test {
  protected:
    MenuStates() { extension->setDrivePath(NS::str("/mnt/Drive")); }

    NS::Ref<QVUserInfoItem> receive(int trashCount, int storageUsed) {
        const auto record = NS::make<QVUserInfoItem>();
        record->setTrashCount(NS::Number::numberWithInt(trashCount));
        record->setStorageUsed(NS::Number::numberWithInt(storageUsed));
        record->setStorageMax(NS::Number::numberWithInt(1));
        extension->setStorageInfo(record);
        return record;
    }
    NS::RefPtr<NS::Object> record() { return state().at(1); }

    NS::Ref<FinderSync> extension = NS::make<FinderSync>();
    MenuState state{extension};
};

TEST_F(MenuStates, HaveTheDrivesPathAndTheRecord) {
    EXPECT_EQ(record(), nullptr);
    const auto first = receive(1, 100);
    EXPECT_EQ(state(), (std::vector<NS::RefPtr<NS::Object>>{extension->drivePath(), first}));
    extension->setDrivePath(NS::str("/mnt/Other"));
    EXPECT_EQ(state().at(0), extension->drivePath());
}

TEST_F(MenuStates, KeepTheRecordThatMenusShowTheSameOf) {
    const auto first = receive(1, 2'000'000);
    EXPECT_EQ(record(), first);
    receive(1, 2'000'000);
    EXPECT_EQ(record(), first);
    receive(1, 2'000'001); // "2.00 MB" as well
    EXPECT_EQ(record(), first);
}

TEST_F(MenuStates, HaveAnotherRecordWhenAMenuShowsItSo) {
    receive(1, 100);
    const auto first = record();
    const auto fuller = receive(1, 200);
    EXPECT_EQ(record(), fuller);
    const auto trashed = receive(2, 200);
    EXPECT_EQ(record(), trashed);
    EXPECT_NE(record(), first);
}

TEST_F(MenuStates, HaveEachRecordThatMenusCannotShow) {
    for (const char* const text : {"no record", "no record"}) {
        const auto other = NS::str(text);
        extension->setStorageInfo(other);
        EXPECT_EQ(record(), other);
    }
    const auto whole = receive(1, 100);
    EXPECT_EQ(record(), whole);
}

} // namespace
