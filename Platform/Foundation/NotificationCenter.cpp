#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Invocation.h"

#include <algorithm>

namespace NS {

constinit const Class Notification::kClass{.name = "NSNotification", .superclass = &Object::kClass};
constinit const Class NotificationCenter::kClass{.name = "NSNotificationCenter",
                                                 .superclass = &Object::kClass};

Notification::Notification(Ref<String> name, RefPtr<Object> object, RefPtr<Dictionary> userInfo)
    : name_(std::move(name)), object_(std::move(object)), userInfo_(std::move(userInfo)) {}

class NotificationCenter::Observation final : public Object {
  public:
    Observation(Ref<Object> observer, Selector selector, RefPtr<String> name, RefPtr<Object> object)
        : call_(make<Invocation>(MethodSignature::signatureForSelector(*observer, selector))),
          name_(std::move(name)), object_(std::move(object)) {
        call_->setTarget(observer);
        call_->setSelector(selector);
    }

    bool concerns(const Notification& notification) const {
        return (!name_ || name_->isEqual(notification.name().get())) &&
               (!object_ || object_ == notification.object());
    }
    bool belongsTo(const Object& observer) const { return call_->target().get() == &observer; }

    void pass(const Ref<Notification>& notification) {
        if (!removed_) {
            call_->setArgument_atIndex(notification, MethodSignature::kFirstParameter);
            call_->invoke();
        }
    }
    void remove() { removed_ = true; }

  private:
    Ref<Invocation> call_;
    RefPtr<String> name_;
    RefPtr<Object> object_;
    bool removed_ = false;
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

void NotificationCenter::addObserver_selector_name_object(Ref<Object> observer, Selector selector,
                                                          RefPtr<String> name,
                                                          RefPtr<Object> object) {
    observations_.push_back(
        make<Observation>(std::move(observer), selector, std::move(name), std::move(object)));
}

void NotificationCenter::removeObserver(const Object& observer) {
    std::erase_if(observations_, [&](const Ref<Observation>& each) {
        const bool gone = each->belongsTo(observer);
        if (gone) {
            each->remove();
        }
        return gone;
    });
}

void NotificationCenter::postNotificationName_object(const Ref<String>& name, RefPtr<Object> object,
                                                     RefPtr<Dictionary> userInfo) {
    const auto notification = make<Notification>(name, std::move(object), std::move(userInfo));
    const std::vector<Ref<Observation>> snapshot = observations_;
    for (const Ref<Observation>& observation : snapshot) {
        if (observation->concerns(*notification)) {
            observation->pass(notification);
        }
    }
}

} // namespace NS
