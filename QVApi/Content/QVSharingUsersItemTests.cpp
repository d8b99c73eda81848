#include "QVApi/Content/QVSharingUsersItem.h"

#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/Testing/RaisedException.h"
#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

using NS::str;
using Tests::textOf;

NS::Ref<NS::Dictionary> user(std::string_view identifier, const NS::Ref<NS::Object>& name) {
    return Tests::dictionaryOf({
        {"SharingID", str(identifier)},
        {"Name",      name           },
        {"ShareMode", str("rw")      }
    });
}

class SharingUsersItem : public testing::Test {
  protected:
    const NS::RefPtr<QVSharingUsersItem> item = Tests::itemFrom<QVSharingUsersItem>({
        {"ShareWithUser", NS::Array::arrayWithObjects({user("1", NS::Number::numberWithInt(5)),
                                                       user("2", str("ada")), user("3", str("Ada")),
                                                       user("4", str("Ada"))})}
    });

    std::string identifierOf(std::string_view name) const {
        const auto found = item->itemNamed(*str(name));
        return found ? textOf(found->identifier()) : "none";
    }
};

TEST_F(SharingUsersItem, HoldsAUserForEachOfTheReply) {
    const auto users = NS::cast<NS::Array>(item->users());
    ASSERT_EQ(users->count(), 4U);
    EXPECT_EQ(textOf(users->valueForKey(*str("identifier"))),
              "(\n    1,\n    2,\n    3,\n    4\n)");
    EXPECT_EQ(textOf(users->objectAtIndex(1)->valueForKey(*str("mode"))), "rw");
}

TEST_F(SharingUsersItem, FindsTheFirstUserOfExactlyTheName) {
    EXPECT_EQ(identifierOf("Ada"), "3");
    EXPECT_EQ(identifierOf("ada"), "2");
    EXPECT_EQ(identifierOf("ADA"), "none");
    EXPECT_EQ(identifierOf("Ad"), "none");
    EXPECT_EQ(identifierOf("5"), "none"); // that user's name is a number
}

TEST_F(SharingUsersItem, FindsNobodyWithoutUsers) {
    EXPECT_FALSE(NS::make<QVSharingUsersItem>()->itemNamed(*str("ada")));
    item->setUsers(NS::Array::arrayWithObjects({str("ada")}));
    EXPECT_FALSE(item->itemNamed(*str("ada")));
}

TEST_F(SharingUsersItem, RaisesWhenTheUsersAreNoList) {
    item->setValue_forKey(str("ada"), *str("users"));
    EXPECT_EQ(Tests::nameOfException([&] { (void)item->itemNamed(*str("ada")); }),
              NS::kInvalidArgumentException);
}

TEST_F(SharingUsersItem, IsNilWhenOneUserLacksAKey) {
    const auto withoutMode = Tests::dictionaryOf({
        {"SharingID", str("5")  },
        {"Name",      str("Bob")}
    });
    EXPECT_FALSE(Tests::itemFrom<QVSharingUsersItem>({
        {"ShareWithUser", NS::Array::arrayWithObjects({user("1", str("Ada")), withoutMode})}
    }));
}

TEST_F(SharingUsersItem, HasNoUsersWhenTheReplyHasNone) {
    const auto empty = Tests::itemFrom<QVSharingUsersItem>({});
    ASSERT_TRUE(empty);
    EXPECT_EQ(NS::cast<NS::MutableArray>(empty->users())->count(), 0U);
}

TEST_F(SharingUsersItem, ComesBackWithItsUsers) {
    const auto back = Tests::restored(Tests::present(item));
    const auto found = back->itemNamed(*str("Ada"));
    ASSERT_TRUE(found);
    EXPECT_EQ(textOf(found->identifier()), "3");
    EXPECT_EQ(NS::cast<NS::Array>(back->users())->count(), 4U);
}

} // namespace
