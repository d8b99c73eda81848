#include "QVApi/Content/QVEntryName.h"

#include "Platform/Foundation/String.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

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

TEST(EntryName, TellsItsVeryObjectFromEqualOnes) {
    QVEntryName name;
    EXPECT_TRUE(name.is(nullptr));
    const auto text = str("a");
    name.store(text);
    EXPECT_TRUE(name.is(text.get()));
    EXPECT_FALSE(name.is(str("a").get()));
    EXPECT_FALSE(name.is(nullptr));
}

// Tells when it ends.
class Mortal final : public NS::Object {
  public:
    explicit Mortal(bool& ended) : ended_(ended) {}
    ~Mortal() override { ended_ = true; }

  private:
    bool& ended_;
};

// A name whose object nobody else holds.
class ReadingOfNames : public testing::Test {
  protected:
    ReadingOfNames() { name.store(NS::make<Mortal>(ended)); }

    bool ended = false;
    QVEntryName name;
    std::optional<QVEntryName::Reading> first{std::in_place};
    std::optional<QVEntryName::Reading> second{std::in_place};
};

TEST_F(ReadingOfNames, SeesTheNameThatIsThere) {
    EXPECT_TRUE(name.is(first->of(name)));
    const auto other = str("other");
    name.store(other);
    EXPECT_EQ(first->of(name), other.get());
    name.store(nullptr);
    EXPECT_EQ(first->of(name), nullptr);
}

TEST_F(ReadingOfNames, KeepsANameThatIsReplacedUntilAllThatCouldSeeItEnd) {
    name.store(str("other"));
    EXPECT_FALSE(ended);
    first.reset();
    EXPECT_FALSE(ended);
    second.reset();
    EXPECT_TRUE(ended);
}

TEST_F(ReadingOfNames, MayEndInAnyOrder) {
    name.store(nullptr);
    second.reset();
    EXPECT_FALSE(ended);
    first.reset();
    EXPECT_TRUE(ended);
}

TEST_F(ReadingOfNames, KeepsNothingThatWasReplacedBefore) {
    name.store(nullptr);
    const QVEntryName::Reading later;
    first.reset();
    second.reset();
    EXPECT_TRUE(ended);
}

TEST_F(ReadingOfNames, LeavesTheEndOfANameToWhoeverReplacesItWhenItIsOver) {
    first.reset();
    second.reset();
    EXPECT_FALSE(ended);
    name.store(nullptr);
    EXPECT_TRUE(ended);
}

} // namespace
