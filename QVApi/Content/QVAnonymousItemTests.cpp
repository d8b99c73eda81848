#include "QVApi/Content/QVAnonymousItem.h"

#include "Platform/Foundation/Description.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <gtest/gtest.h>

namespace {

std::string text(const NS::RefPtr<NS::Object>& object) {
    return NS::descriptionOf(object.get())->utf8();
}

class AnonymousItem : public testing::Test {
  protected:
    NS::Ref<NS::Dictionary> reply = NS::Dictionary::dictionaryWithEntries({
        {"identifier", NS::str("of the reply")                                            },
        {"count",      NS::str("3")                                                       },
        {"nested",     NS::Dictionary::dictionaryWithEntries({{"name", NS::str("inner")}})},
    });
    NS::RefPtr<NS::Error> error;
};

TEST_F(AnonymousItem, HoldsTheWholeReply) {
    const auto item = QVAnonymousItem::itemWithDict_error(*reply, &error);
    ASSERT_TRUE(item);
    EXPECT_TRUE(item->response()->isEqual(reply.get()));
    EXPECT_NE(item->response(), reply);
    EXPECT_FALSE(error);
}

TEST_F(AnonymousItem, HoldsAnEmptyReply) {
    const auto empty = NS::make<NS::Dictionary>();
    EXPECT_TRUE(QVAnonymousItem::itemWithDict_error(*empty, nullptr)->response());
}

TEST_F(AnonymousItem, HoldsTheWholeReplyAlsoWhenItsClassIsAValue) {
    const auto item = NS::as<QVAnonymousItem>(
        QVContentItem::itemWithDict_error(QVAnonymousItem::kContentClass, *reply, nullptr));
    ASSERT_TRUE(item && item->response());
    EXPECT_TRUE(item->response()->isEqual(reply.get()));
}

TEST_F(AnonymousItem, SendsKeysToTheReply) {
    const auto item = QVAnonymousItem::itemWithDict_error(*reply, &error);
    item->setIdentifier(NS::str("of the item"));
    EXPECT_EQ(text(item->valueForKey(NS::str("identifier"))), "of the reply");
    EXPECT_EQ(text(item->identifier()), "of the item");
    EXPECT_EQ(text(item->valueForKeyPath(NS::str("nested.name"))), "inner");
    EXPECT_FALSE(item->valueForKey(NS::str("timeReceived")));
}

TEST_F(AnonymousItem, StoresKeysInTheReply) {
    const auto item = QVAnonymousItem::itemWithDict_error(*reply, &error);
    item->setValue_forKey(NS::str("new"), NS::str("identifier"));
    item->setValue_forKeyPath(NS::str("4"), NS::str("count"));
    item->setValue_forKey(nullptr, NS::str("nested"));
    EXPECT_FALSE(item->identifier());
    EXPECT_EQ(text(item->response()), "{\n    count = 4;\n    identifier = new;\n}");
    EXPECT_EQ(reply->count(), 3U);
}

TEST_F(AnonymousItem, WithoutReplyHasNoKeys) {
    const auto item = NS::make<QVAnonymousItem>();
    item->setValue_forKey(NS::str("x"), NS::str("key"));
    EXPECT_FALSE(item->valueForKey(NS::str("key")));
    EXPECT_FALSE(item->valueForKeyPath(NS::str("key.path")));
}

TEST_F(AnonymousItem, KeepsWhatTheBlockMakesOfEachEntry) {
    std::string seen;
    const auto item = QVAnonymousItem::itemWithDict_parseBlock_error(
        *reply,
        [&](const auto& key, const auto& value, auto& failure) -> NS::RefPtr<NS::Object> {
            EXPECT_FALSE(failure);
            seen += text(key) + " ";
            return text(key) == "nested" ? nullptr : NS::RefPtr<NS::Object>(value);
        },
        &error);
    ASSERT_TRUE(item);
    EXPECT_EQ(seen, "identifier count nested ");
    EXPECT_EQ(text(item->response()), "{\n    count = 3;\n    identifier = \"of the reply\";\n}");
    EXPECT_FALSE(error);
}

TEST_F(AnonymousItem, IsNilWithTheBlocksFirstError) {
    int calls = 0;
    const auto failure = NS::make<NS::Error>(NS::str("Domain"), 5);
    const auto item = QVAnonymousItem::itemWithDict_parseBlock_error(
        *reply,
        [&](const auto&, const auto& value, auto& location) {
            if (++calls == 2) {
                location = failure;
            }
            return NS::RefPtr<NS::Object>(value);
        },
        &error);
    EXPECT_FALSE(item);
    EXPECT_EQ(error, failure);
    EXPECT_EQ(calls, 2);
}

TEST_F(AnonymousItem, IsArchivedWithoutItsReply) {
    const auto item = QVAnonymousItem::itemWithDict_error(*reply, &error);
    item->setTimeReceived(2.5);
    const auto back = NS::as<QVAnonymousItem>(NS::KeyedUnarchiver::unarchiveObjectWithData(
        *NS::KeyedArchiver::archivedDataWithRootObject(item)));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->timeReceived(), 2.5);
    EXPECT_FALSE(back->response());
}

} // namespace
