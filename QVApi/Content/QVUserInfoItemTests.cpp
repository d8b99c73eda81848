#include "QVApi/Content/QVUserInfoItem.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Null.h"
#include "Platform/Foundation/Testing/HandMadeArchive.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string text(const NS::RefPtr<NS::Object>& object) {
    return NS::descriptionOf(object.get())->utf8();
}

class UserInfoItem : public testing::Test {
  protected:
    using Reply = std::initializer_list<std::pair<std::string_view, NS::Ref<NS::Object>>>;

    static NS::RefPtr<QVUserInfoItem> build(Reply reply) {
        return NS::as<QVUserInfoItem>(NS::RefPtr<NS::Object>(QVContentItem::itemWithDict_error(
            QVUserInfoItem::kContentClass, *NS::Dictionary::dictionaryWithEntries(reply),
            nullptr)));
    }
    static NS::RefPtr<QVUserInfoItem> restored(const NS::Ref<QVUserInfoItem>& item) {
        return NS::as<QVUserInfoItem>(NS::KeyedUnarchiver::unarchiveObjectWithData(
            *NS::KeyedArchiver::archivedDataWithRootObject(item)));
    }
    static bool isUnlimited(std::string_view plan) {
        const auto item = NS::make<QVUserInfoItem>();
        item->setPlan(NS::str(plan));
        return item->isUnlimited();
    }
};

TEST_F(UserInfoItem, MapsEachKeyOfTheReply) {
    const auto item = build({
        {"MaxStorage",  NS::str("2048")                          },
        {"StorageUsed", NS::Number::numberWithLongLong(1LL << 40)},
        {"BwUsed",      NS::str("12.9")                          },
        {"BwMax",       NS::Number::numberWithDouble(-3.9)       },
        {"UserPlan",    NS::str("Basic")                         }
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(text(item->storageMax()), "2048");
    EXPECT_EQ(text(item->storageUsed()), "1099511627776");
    EXPECT_EQ(text(item->bandwidthUsed()), "12");
    EXPECT_EQ(text(item->bandwidthMax()), "-3");
    EXPECT_EQ(text(item->plan()), "Basic");
    EXPECT_FALSE(item->trashCount());
    EXPECT_EQ(text(item->identifier()), "default");
}

TEST_F(UserInfoItem, HasZeroForFiguresThatTheReplyLacks) {
    const auto item = build({
        {"UserPlan", NS::str("Basic")}
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(text(item->storageMax()), "0");
    EXPECT_EQ(text(item->storageUsed()), "0");
    EXPECT_EQ(text(item->bandwidthUsed()), "0");
    EXPECT_EQ(text(item->bandwidthMax()), "0");
}

TEST_F(UserInfoItem, IsNilWithoutAPlan) {
    EXPECT_FALSE(build({
        {"MaxStorage",  NS::str("2048")},
        {"StorageUsed", NS::str("1")   },
        {"BwUsed",      NS::str("1")   },
        {"BwMax",       NS::str("1")   }
    }));
}

TEST_F(UserInfoItem, StoresThePlanAsTheReplyHasIt) {
    const auto plan = NS::Number::numberWithInt(7);
    EXPECT_EQ(build({
                        {"UserPlan", plan}
    })
                  ->plan(),
              plan);
    EXPECT_EQ(build({
                        {"UserPlan", NS::Null::null()}
    })
                  ->plan(),
              NS::Null::null());
}

TEST_F(UserInfoItem, TellsItsTables) {
    EXPECT_EQ(text(QVContentItem::mappingDict(QVUserInfoItem::kContentClass)),
              "{\n    bandwidthMax = BwMax;\n    bandwidthUsed = BwUsed;\n    plan = UserPlan;\n"
              "    storageMax = MaxStorage;\n    storageUsed = StorageUsed;\n}");
    EXPECT_EQ(text(QVContentItem::encodeArray(QVUserInfoItem::kContentClass)),
              "(\n    identifier,\n    storageMax,\n    storageUsed,\n    bandwidthUsed,\n"
              "    bandwidthMax,\n    plan,\n    trashCount\n)");
}

TEST_F(UserInfoItem, IsUnlimitedByItsPlansName) {
    EXPECT_TRUE(isUnlimited("Unlimited"));
    EXPECT_TRUE(isUnlimited("Unlimited Plus"));
    EXPECT_TRUE(isUnlimited("Team Unlimited"));
    EXPECT_TRUE(isUnlimited("A Unlimited B"));
    EXPECT_FALSE(isUnlimited("unlimited"));
    EXPECT_FALSE(isUnlimited("UNLIMITED"));
    EXPECT_FALSE(isUnlimited("Unlimite"));
    EXPECT_FALSE(isUnlimited(""));
}

TEST_F(UserInfoItem, IsUnlimitedWithoutAPlan) {
    EXPECT_TRUE(NS::make<QVUserInfoItem>()->isUnlimited());
    Tests::HandMadeArchive archive;
    const auto root = archive.addRecord(archive.addClass("QVUserInfoItem"), {});
    const auto back =
        NS::as<QVUserInfoItem>(NS::KeyedUnarchiver::unarchiveObjectWithData(*archive.data(root)));
    EXPECT_TRUE(back->isUnlimited());
}

TEST_F(UserInfoItem, RaisesForAPlanThatIsNoText) {
    const auto item = build({
        {"UserPlan", NS::Null::null()}
    });
    EXPECT_EQ(Tests::nameOfException([&] { (void)item->isUnlimited(); }),
              NS::kInvalidArgumentException);
}

TEST_F(UserInfoItem, ComesBackFromItsArchiveWhole) {
    const auto item = NS::make<QVUserInfoItem>();
    item->setTimeReceived(1.5);
    item->setStorageUsed(NS::Number::numberWithLongLong(1));
    item->setStorageMax(NS::Number::numberWithLongLong(2));
    item->setBandwidthUsed(NS::Number::numberWithLongLong(3));
    item->setBandwidthMax(NS::Number::numberWithLongLong(4));
    item->setPlan(NS::str("Basic"));
    item->setTrashCount(NS::Number::numberWithLongLong(5));
    const auto back = restored(item);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->timeReceived(), 1.5);
    const auto keys = QVContentItem::encodeArray(QVUserInfoItem::kContentClass);
    for (const NS::Ref<NS::Object>& key : *keys) {
        const auto& name = static_cast<const NS::String&>(*key);
        EXPECT_TRUE(back->valueForKey(name)->isEqual(item->valueForKey(name).get())) << name.utf8();
    }
}

TEST_F(UserInfoItem, ComesBackWithWhatWasAbsentAbsent) {
    const auto back = restored(NS::make<QVUserInfoItem>());
    ASSERT_TRUE(back);
    EXPECT_EQ(text(back->identifier()), "default");
    EXPECT_FALSE(back->plan());
    EXPECT_FALSE(back->storageMax());
    EXPECT_FALSE(back->trashCount());
}

// Two records of one archive that were made by the initialiser share its identifier.
TEST_F(UserInfoItem, EqualsAnotherOneByTheFixedIdentifier) {
    EXPECT_TRUE(NS::make<QVUserInfoItem>()->isEqualTo(NS::make<QVUserInfoItem>().get()));
    EXPECT_FALSE(restored(NS::make<QVUserInfoItem>())->isEqualTo(NS::make<QVUserInfoItem>().get()));
}

} // namespace
