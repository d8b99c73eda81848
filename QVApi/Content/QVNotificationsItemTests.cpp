#include "QVApi/Content/QVNotificationsItem.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

TEST(NotificationsItem, HoldsTheReplysOwnList) {
    const auto list = NS::Array::arrayWithObjects({NS::str("news")});
    const auto item = Tests::itemFrom<QVNotificationsItem>({
        {"Notification", list}
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(item->list(), list);
    EXPECT_FALSE(item->identifier());
}

TEST(NotificationsItem, IsNilWithoutAList) {
    EXPECT_FALSE(Tests::itemFrom<QVNotificationsItem>({}));
}

TEST(NotificationsItem, LosesItsListInTheArchive) {
    const auto item = NS::make<QVNotificationsItem>();
    item->setTimeReceived(7.5);
    item->setList(NS::make<NS::MutableArray>());
    const auto back = Tests::restored(item);
    EXPECT_EQ(back->timeReceived(), 7.5);
    EXPECT_FALSE(back->list());
}

} // namespace
