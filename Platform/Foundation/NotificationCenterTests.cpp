#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using NS::Notification;
using NS::NotificationCenter;
using NS::str;

constexpr NS::Selector kReceive{"receive:"};

using Journal = std::vector<std::string>;

// Writes what it receives into a journal.
class Observer final : public NS::Object {
    NS_OBJECT(Observer)
  public:
    Observer(std::string name, Journal& journal) : name_(std::move(name)), journal_(journal) {}
    ~Observer() override { whenEnding(); }

    void receive(const NS::RefPtr<Notification>& notification) {
        last = notification;
        journal_.push_back(name_ + " " + notification->name()->utf8());
        const auto act = whenReceiving; // which may replace itself
        act();
    }
    void poke() { journal_.push_back(name_ + " poked"); }

    NS::RefPtr<Notification> last;
    std::function<void()> whenReceiving = [] {
    };
    std::function<void()> whenEnding = [] {
    };

  private:
    std::string name_;
    Journal& journal_;
};

constexpr NS::Method kObserverMethods[] = {
    NS::method<&Observer::receive>("receive:"),
    NS::method<&Observer::poke>("poke"),
};
constinit const NS::Class Observer::kClass{
    .name = "Observer", .superclass = &NS::Object::kClass, .methods = kObserverMethods};

class NotificationCenterTest : public testing::Test {
  protected:
    NS::Ref<Observer> observer(std::string name) {
        return NS::make<Observer>(std::move(name), journal);
    }
    void observe(const NS::Ref<Observer>& who, NS::RefPtr<NS::String> name,
                 NS::RefPtr<NS::Object> object = nullptr) {
        center->addObserver_selector_name_object(who, kReceive, std::move(name), std::move(object));
    }
    void post(const char* name, NS::RefPtr<NS::Object> object = nullptr) {
        center->postNotificationName_object(str(name), std::move(object));
    }

    Journal journal;
    const NS::Ref<NotificationCenter> center = NS::make<NotificationCenter>();
    const NS::Ref<Observer> a = observer("a");
    const NS::Ref<Observer> b = observer("b");
    const NS::Ref<Observer> c = observer("c");
};

TEST_F(NotificationCenterTest, PassesOnInTheOrderOfAsking) {
    observe(b, str("n"));
    observe(a, str("n"));
    observe(c, str("n"));
    observe(a, str("n"));
    post("n");
    EXPECT_EQ(journal, (Journal{"b n", "a n", "c n", "a n"}));
}

TEST_F(NotificationCenterTest, PassesNameObjectAndFactsOn) {
    observe(a, str("n"));
    const auto object = str("object");
    const auto facts = NS::Dictionary::dictionaryWithEntries({
        {"k", str("v")}
    });
    center->postNotificationName_object(str("n"), object, facts);
    ASSERT_TRUE(a->last);
    EXPECT_EQ(a->last->name()->utf8(), "n");
    EXPECT_EQ(a->last->object(), NS::RefPtr<NS::Object>(object));
    EXPECT_EQ(a->last->userInfo(), NS::RefPtr<NS::Dictionary>(facts));
    post("n");
    EXPECT_EQ(a->last->object(), nullptr);
    EXPECT_EQ(a->last->userInfo(), nullptr);
}

TEST_F(NotificationCenterTest, ChoosesByName) {
    observe(a, str("one"));
    observe(b, str("two"));
    observe(c, nullptr);
    post("one");
    post("two");
    post("three");
    EXPECT_EQ(journal, (Journal{"a one", "c one", "b two", "c two", "c three"}));
}

TEST_F(NotificationCenterTest, ChoosesByTheIdentityOfTheObject) {
    const auto object = str("object");
    observe(a, str("n"), object);
    observe(b, nullptr, object);
    post("n", object);
    post("n", str("object"));
    post("n");
    post("m", object);
    EXPECT_EQ(journal, (Journal{"a n", "b n", "b m"}));
}

TEST_F(NotificationCenterTest, ForgetsAllThatAnObserverAskedFor) {
    observe(a, str("n"));
    observe(b, str("n"));
    observe(a, nullptr);
    center->removeObserver(*a);
    center->removeObserver(*c);
    post("n");
    EXPECT_EQ(journal, Journal{"b n"});
}

TEST_F(NotificationCenterTest, KeepsObserversAliveUntilTheyAreRemoved) {
    EXPECT_EQ(a->referenceCount(), 1U);
    observe(a, str("n"));
    EXPECT_EQ(a->referenceCount(), 2U);
    center->removeObserver(*a);
    EXPECT_EQ(a->referenceCount(), 1U);
}

TEST_F(NotificationCenterTest, KeepsNothingOfANotification) {
    observe(a, str("n"));
    const auto object = str("object");
    post("n", object);
    a->last = nullptr;
    EXPECT_EQ(object->referenceCount(), 1U);
}

TEST_F(NotificationCenterTest, PassesNothingToOneRemovedMeanwhile) {
    observe(a, str("n"));
    observe(b, str("n"));
    observe(c, str("n"));
    a->whenReceiving = [&] {
        center->removeObserver(*b);
    };
    post("n");
    EXPECT_EQ(journal, (Journal{"a n", "c n"}));
}

TEST_F(NotificationCenterTest, LetsAnObserverRemoveItself) {
    observe(a, str("n"));
    observe(b, str("n"));
    a->whenReceiving = [&] {
        center->removeObserver(*a);
    };
    post("n");
    post("n");
    EXPECT_EQ(journal, (Journal{"a n", "b n", "b n"}));
}

TEST_F(NotificationCenterTest, PassesNothingYetToOneAddedMeanwhile) {
    observe(a, str("n"));
    a->whenReceiving = [&] {
        observe(b, str("n"));
        a->whenReceiving = [] {
        };
    };
    post("n");
    EXPECT_EQ(journal, Journal{"a n"});
    post("n");
    EXPECT_EQ(journal, (Journal{"a n", "a n", "b n"}));
}

TEST_F(NotificationCenterTest, PassesAPostWithinAPostOnFirst) {
    observe(a, nullptr);
    observe(b, nullptr);
    a->whenReceiving = [&] {
        a->whenReceiving = [] {
        };
        post("inner");
    };
    post("outer");
    EXPECT_EQ(journal, (Journal{"a outer", "a inner", "b inner", "b outer"}));
    EXPECT_EQ(b->last->name()->utf8(), "outer");
}

TEST_F(NotificationCenterTest, LetsAnObserverThatEndsUseIt) {
    bool ended = false;
    NS::RefPtr<Observer> dying = observer("dying");
    Observer* const address = dying.get();
    dying->whenEnding = [&] {
        center->removeObserver(*b);
        post("n");
        ended = true;
    };
    observe(a, str("n"));
    observe(NS::Ref<Observer>(*dying), str("n"));
    observe(NS::Ref<Observer>(*dying), str("m"));
    observe(b, str("n"));
    dying = nullptr;
    center->removeObserver(*address); // the last reference was the centre's
    EXPECT_TRUE(ended);
    EXPECT_EQ(journal, Journal{"a n"});
}

TEST_F(NotificationCenterTest, PassesOnWhatAnObserverRaises) {
    observe(a, str("n"));
    observe(b, str("n"));
    a->whenReceiving = [] {
        NS::Exception::raise("Custom", "refused");
    };
    EXPECT_EQ(Tests::reasonOfException([&] { post("n"); }), "refused");
    EXPECT_EQ(journal, Journal{"a n"});
}

TEST_F(NotificationCenterTest, RaisesForAnObserverThatCannotReceive) {
    for (const char* selector : {"missing:", "poke", "receive"}) {
        EXPECT_EQ(Tests::nameOfException([&] {
                      center->addObserver_selector_name_object(a, {selector}, nullptr, nullptr);
                  }),
                  NS::kInvalidArgumentException)
            << selector;
    }
    post("n");
    EXPECT_EQ(journal, Journal{});
    EXPECT_EQ(a->referenceCount(), 1U);
}

TEST_F(NotificationCenterTest, PassesNothingOnWithoutObservers) {
    post("n");
    EXPECT_EQ(journal, Journal{});
}

} // namespace
