#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <vector>

namespace NS {

// What an observer receives: a name, the object it is about and, if the poster gave any, more
// facts.
class Notification final : public Object {
    NS_OBJECT(Notification)
  public:
    Notification(Ref<String> name, RefPtr<Object> object, RefPtr<Dictionary> userInfo);

    const Ref<String>& name() const noexcept { return name_; }
    const RefPtr<Object>& object() const noexcept { return object_; }
    const RefPtr<Dictionary>& userInfo() const noexcept { return userInfo_; }

  private:
    Ref<String> name_;
    RefPtr<Object> object_;
    RefPtr<Dictionary> userInfo_;
};

// Passes notifications on to those who asked for them, in the order in which they asked, on the
// poster's thread and before the post returns. Keeps its observers alive until they are removed.
// Belongs to one thread.
class NotificationCenter final : public Object {
    NS_OBJECT(NotificationCenter)
  public:
    NotificationCenter() noexcept;
    ~NotificationCenter() override;

    // Calls the observer's selector, which takes the Notification, for each post of the name (any
    // name when nil) about the object (any object when nil; compared by identity). Raises
    // NSInvalidArgumentException when the observer does not respond to the selector, or the
    // selector does not take one argument.
    void addObserver_selector_name_object(Ref<Object> observer, Selector selector,
                                          RefPtr<String> name, RefPtr<Object> object);
    // Forgets all that the observer asked for. An observer removed while a notification is being
    // passed on does not receive it any more; one added meanwhile does not receive it yet.
    void removeObserver(const Object& observer);

    void postNotificationName_object(const Ref<String>& name, RefPtr<Object> object,
                                     RefPtr<Dictionary> userInfo = nullptr);

  private:
    class Observation;
    std::vector<Ref<Observation>> observations_;
};

} // namespace NS
