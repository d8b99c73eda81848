#include "QVApi/Content/QVEntryName.h"

#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

namespace {

using NS::str;

// How many renamings an action makes.
template <class Action>
std::uint64_t renamingsBy(Action&& action) {
    const std::uint64_t before = QVEntryName::renamings();
    action();
    return QVEntryName::renamings() - before;
}

TEST(EntryName, KeepsAnyObject) {
    QVEntryName name;
    EXPECT_FALSE(name.load());
    const NS::Ref<NS::Object> object = NS::Number::numberWithInt(1);
    name.store(object);
    EXPECT_EQ(name.load(), object);
}

TEST(EntryName, CountsEveryNameButTheFirst) {
    QVEntryName name;
    EXPECT_EQ(renamingsBy([&] { name.store(str("a")); }), 0U);
    EXPECT_EQ(renamingsBy([&] { name.store(str("a")); }), 1U);
    EXPECT_EQ(renamingsBy([&] { name.store(nullptr); }), 1U);
    EXPECT_EQ(renamingsBy([&] { name.store(nullptr); }), 0U);
    EXPECT_EQ(renamingsBy([&] { name.store(str("b")); }), 0U);
}

TEST(EntryName, DoesNotCountTheVerySameName) {
    QVEntryName name;
    const auto same = str("a");
    name.store(same);
    EXPECT_EQ(renamingsBy([&] { name.store(same); }), 0U);
}

} // namespace
