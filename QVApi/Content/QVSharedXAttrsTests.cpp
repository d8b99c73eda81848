#include "QVApi/Content/QVSharedXAttrs.h"

#include "QVApi/Content/Testing/ContentRecords.h"

#include <gtest/gtest.h>

namespace {

using NS::str;
using Tests::textOf;

TEST(SharedXAttrs, BeginsWithATableOfItsOwn) {
    const auto item = NS::make<QVSharedXAttrs>();
    NS::cast<NS::MutableDictionary>(item->xattrsByPath())->setObject_forKey(str("x"), "/a");
    EXPECT_EQ(textOf(NS::make<QVSharedXAttrs>()->xattrsByPath()), "{\n}");
    EXPECT_EQ(textOf(item->identifier()), "default");
}

TEST(SharedXAttrs, ComesBackWithItsTable) {
    const auto item = NS::make<QVSharedXAttrs>();
    const auto attributes = NS::make<NS::MutableDictionary>();
    attributes->setObject_forKey(str("blue"), "tag");
    NS::cast<NS::MutableDictionary>(item->xattrsByPath())->setObject_forKey(attributes, "/a");
    item->setDateModified(NS::Date::dateWithTimeIntervalSince1970(1500000000));
    const auto back = Tests::restored(item);
    EXPECT_TRUE(NS::as<NS::MutableDictionary>(back->xattrsByPath()));
    EXPECT_TRUE(back->xattrsByPath()->isEqual(item->xattrsByPath().get()));
    EXPECT_TRUE(back->dateModified()->isEqual(item->dateModified().get()));
    EXPECT_EQ(textOf(back->identifier()), "default");
}

TEST(SharedXAttrs, ComesBackWithoutATableThatWasNotThere) {
    const auto item = NS::make<QVSharedXAttrs>();
    item->setXattrsByPath(nullptr);
    EXPECT_FALSE(Tests::restored(item)->xattrsByPath());
    EXPECT_FALSE(Tests::restoredFromNothing<QVSharedXAttrs>()->xattrsByPath());
}

} // namespace
