#include "QVApi/Content/QVUserSessionItem.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using NS::str;
using Tests::textOf;

class UserSessionItem : public testing::Test {
  protected:
    const NS::Ref<NS::MutableDictionary> reply =
        Tests::dictionaryOf({
                                {"SessionID",        str("s-1")                      },
                                {"UserName",         str("ada")                      },
                                {"AccType",          NS::Number::numberWithInt(2)    },
                                {"DriveName",        str("Drive")                    },
                                {"UserFirstName",    str("Ada")                      },
                                {"UserLastName",     str("Lovelace")                 },
                                {"UserID",           str("17")                       },
                                {"UploadSpeedLimit", NS::Number::numberWithInt(0)    },
                                {"Active2FA",        NS::Number::numberWithBool(true)},
                                {"IsAccountUser",    str("1")                        },
                                {"identifier",       str("of the reply")             }
    })
            ->mutableCopy();

    NS::RefPtr<QVUserSessionItem> buildWithout(std::string_view key) {
        reply->removeObjectForKey(*str(key));
        return QVUserSessionItem::itemWithDict_error(*reply, nullptr);
    }
};

TEST_F(UserSessionItem, MapsEachKeyOfTheReply) {
    const auto item = QVUserSessionItem::itemWithDict_error(*reply, nullptr);
    ASSERT_TRUE(item);
    EXPECT_EQ(textOf(item->sessionId()), "s-1");
    EXPECT_EQ(textOf(item->username()), "ada");
    EXPECT_EQ(textOf(item->accountType()), "2");
    EXPECT_EQ(textOf(item->driveName()), "Drive");
    EXPECT_EQ(textOf(item->firstName()), "Ada");
    EXPECT_EQ(textOf(item->lastName()), "Lovelace");
    EXPECT_EQ(textOf(item->userId()), "17");
    EXPECT_EQ(textOf(item->uploadSpeedLimit()), "0");
    EXPECT_EQ(textOf(item->active2FA()), "1");
    EXPECT_EQ(textOf(item->isAccountUser()), "1");
    EXPECT_EQ(textOf(item->identifier()), "default");
}

TEST_F(UserSessionItem, IsNoAccountUsersWithoutTheKey) {
    const auto item = buildWithout("IsAccountUser");
    ASSERT_TRUE(item);
    EXPECT_EQ(NS::cast<NS::Number>(item->isAccountUser())->type(), NS::Number::Type::kBoolean);
    EXPECT_EQ(textOf(item->isAccountUser()), "0");
}

TEST_F(UserSessionItem, IsNilWithoutTheSecondFactorsKey) {
    EXPECT_FALSE(buildWithout("Active2FA"));
}

TEST_F(UserSessionItem, LeavesToItsOwnerWhatNoReplyHas) {
    const auto item = QVUserSessionItem::itemWithDict_error(*reply, nullptr);
    EXPECT_FALSE(item->encryptionKey());
    EXPECT_FALSE(item->userIdentifier());
    EXPECT_FALSE(item->userLevel());
}

TEST_F(UserSessionItem, ComesBackWithItsKey) {
    const auto item = NS::make<QVUserSessionItem>();
    item->setEncryptionKey(NS::Data::dataWithBytes(NS::bytesOf("\x01\xFF key")));
    item->setUserLevel(NS::Number::numberWithInt(3));
    const auto back = Tests::restored(item);
    EXPECT_TRUE(back->encryptionKey()->isEqual(item->encryptionKey().get()));
    EXPECT_EQ(textOf(back->userLevel()), "3");
    EXPECT_EQ(textOf(back->identifier()), "default");
}

TEST_F(UserSessionItem, DescribesItselfByUserAndSession) {
    const auto item = QVUserSessionItem::itemWithDict_error(*reply, nullptr);
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*item), " (username=ada, sessionId=s-1, ...)");
    EXPECT_EQ(Tests::descriptionBehindTheRoots(*NS::make<QVUserSessionItem>()),
              " (username=(null), sessionId=(null), ...)");
}

} // namespace
