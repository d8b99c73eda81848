#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <utility>

namespace NS {

// One entry of a menu: a title and the operation that picking it calls. Main thread.
class MenuItem final : public Object {
    NS_OBJECT(MenuItem)
  public:
    // An enabled entry without a target. An empty selector is no action.
    MenuItem(Ref<String> title, Selector action, Ref<String> keyEquivalent)
        : title_(std::move(title)), action_(action), keyEquivalent_(std::move(keyEquivalent)) {}

    const Ref<String>& title() const noexcept { return title_; }
    Selector action() const noexcept { return action_; }
    // The key that picks it; the empty text is none.
    const Ref<String>& keyEquivalent() const noexcept { return keyEquivalent_; }

    bool isEnabled() const noexcept { return enabled_; }
    void setEnabled(bool enabled) noexcept { enabled_ = enabled; }
    // Whom the action is sent to; nil leaves it to whoever shows the menu.
    const RefPtr<Object>& target() const noexcept { return target_; }
    void setTarget(RefPtr<Object> target) noexcept { target_ = std::move(target); }

    // Calls the action on the target, or on the receiver where there is none, with the entry as
    // sender for an action that takes one. An entry without an action does nothing. Raises
    // NSInvalidArgumentException when the one called does not respond to the action, and whatever
    // the action raises.
    void sendAction(Object& receiver);

  private:
    Ref<String> title_;
    Selector action_;
    Ref<String> keyEquivalent_;
    RefPtr<Object> target_;
    bool enabled_ = true;
};

} // namespace NS
