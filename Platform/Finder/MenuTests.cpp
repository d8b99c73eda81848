#include "Platform/Finder/Menu.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

namespace {

// What a menu entry can call.
class Receiver final : public NS::Object {
    NS_OBJECT(Receiver)
  public:
    void plain() { ++plainCalls; }
    void withSender(NS::RefPtr<NS::Object> sender) { lastSender = sender; }
    void withTwo(NS::RefPtr<NS::Object>, NS::RefPtr<NS::Object>) {}

    int plainCalls = 0;
    NS::RefPtr<NS::Object> lastSender;
};

constexpr NS::Method kMethods[] = {
    NS::method<&Receiver::plain>("plain"),
    NS::method<&Receiver::withSender>("withSender:"),
    NS::method<&Receiver::withTwo>("with:two:"),
};

constinit const NS::Class Receiver::kClass{
    .name = "Receiver", .superclass = &NS::Object::kClass, .methods = kMethods};

NS::Ref<NS::MenuItem> item(const char* selector) {
    return NS::make<NS::MenuItem>(NS::str("Entry"), NS::Selector{selector}, NS::str(""));
}

TEST(Menu, KeepsItsEntriesInOrder) {
    const auto menu = NS::make<NS::Menu>(NS::str("Title"));
    const auto first =
        menu->addItemWithTitle_action_keyEquivalent(NS::str("A"), {"plain"}, NS::str("k"));
    const auto second = item("");
    menu->addItem(second);
    EXPECT_EQ(menu->title()->utf8(), "Title");
    ASSERT_EQ(menu->itemArray().size(), 2U);
    EXPECT_EQ(menu->itemArray()[0], first);
    EXPECT_EQ(menu->itemArray()[1], second);
    EXPECT_EQ(first->title()->utf8(), "A");
    EXPECT_EQ(first->action().name, "plain");
    EXPECT_EQ(first->keyEquivalent()->utf8(), "k");
}

TEST(MenuItem, IsEnabledAndWithoutTargetAtFirst) {
    EXPECT_TRUE(item("plain")->isEnabled());
    EXPECT_FALSE(item("plain")->target());
}

TEST(MenuItem, SendsItsActionToTheReceiverWhenItHasNoTarget) {
    const auto receiver = NS::make<Receiver>();
    item("plain")->sendAction(receiver);
    EXPECT_EQ(receiver->plainCalls, 1);
}

TEST(MenuItem, SendsItsActionToItsTarget) {
    const auto receiver = NS::make<Receiver>();
    const auto target = NS::make<Receiver>();
    const auto entry = item("plain");
    entry->setTarget(target);
    entry->sendAction(receiver);
    EXPECT_EQ(receiver->plainCalls, 0);
    EXPECT_EQ(target->plainCalls, 1);
}

TEST(MenuItem, IsTheSenderOfItsAction) {
    const auto receiver = NS::make<Receiver>();
    const auto entry = item("withSender:");
    entry->sendAction(receiver);
    EXPECT_EQ(receiver->lastSender, entry);
}

TEST(MenuItem, DoesNothingWithoutAnAction) {
    const auto receiver = NS::make<Receiver>();
    item("")->sendAction(receiver);
    EXPECT_EQ(receiver->plainCalls, 0);
}

TEST(MenuItem, RaisesForAnActionThatTheReceiverDoesNotHave) {
    const auto receiver = NS::make<Receiver>();
    for (const char* const selector : {"unknown", "plain:", "with:two:"}) {
        EXPECT_EQ(Tests::nameOfException([&] { item(selector)->sendAction(receiver); }),
                  NS::kInvalidArgumentException)
            << selector;
    }
}

} // namespace
