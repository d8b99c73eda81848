#include "QVApi/Content/QVUserLinksItem.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

using Tests::textOf;

TEST(UserLinksItem, MapsBothLinks) {
    const auto item = Tests::itemFrom<QVUserLinksItem>({
        {"account", NS::str("https://a")},
        {"billing", NS::str("https://b")}
    });
    ASSERT_TRUE(item);
    EXPECT_EQ(textOf(item->accountLink()), "https://a");
    EXPECT_EQ(textOf(item->billingLink()), "https://b");
    EXPECT_EQ(textOf(item->identifier()), "default");
}

TEST(UserLinksItem, IsNilWithOneLink) {
    EXPECT_FALSE(Tests::itemFrom<QVUserLinksItem>({
        {"account", NS::str("https://a")}
    }));
}

TEST(UserLinksItem, LosesItsIdentifierInTheArchive) {
    const auto item = NS::make<QVUserLinksItem>();
    item->setAccountLink(NS::str("https://a"));
    const auto back = Tests::restored(item);
    EXPECT_EQ(textOf(back->accountLink()), "https://a");
    EXPECT_FALSE(back->identifier());
}

} // namespace
