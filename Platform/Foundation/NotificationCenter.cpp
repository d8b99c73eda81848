#include "Platform/Foundation/NotificationCenter.h"

#include <utility>

namespace NS {

constinit const Class Notification::kClass{.name = "NSNotification", .superclass = &Object::kClass};
constinit const Class NotificationCenter::kClass{.name = "NSNotificationCenter",
                                                 .superclass = &Object::kClass};

Notification::Notification(Ref<String> name, RefPtr<Object> object, RefPtr<Dictionary> userInfo)
    : name_(std::move(name)), object_(std::move(object)), userInfo_(std::move(userInfo)) {}

class NotificationCenter::Observation final : public Object {
  public:
    Observation(Ref<Object> observer, const Method& method, RefPtr<String> name,
                RefPtr<Object> object)
        : observer_(std::move(observer)), method_(method), name_(std::move(name)),
          object_(std::move(object)) {}

    bool concerns(const Notification& notification) const {
        return (!name_ || name_->isEqual(notification.name().get())) &&
               (!object_ || object_ == notification.object());
    }
    bool belongsTo(const Object& observer) const { return observer_.get() == &observer; }

    void pass(const RefPtr<Object>& notification) const {
        if (!removed_) {
            method_.invoke(*observer_, {&notification, 1});
        }
    }
    void remove() { removed_ = true; }

  private:
    Ref<Object> observer_;
    const Method& method_;
    RefPtr<String> name_;
    RefPtr<Object> object_;
    bool removed_ = false;
};

NotificationCenter::NotificationCenter() noexcept = default;
NotificationCenter::~NotificationCenter() = default;

void NotificationCenter::addObserver_selector_name_object(Ref<Object> observer, Selector selector,
                                                          RefPtr<String> name,
                                                          RefPtr<Object> object) {
    const Method* const method = observer->methodForSelector(selector);
    if (method == nullptr || selector.argumentCount() != 1) {
        raiseUnrecognizedSelector(*observer, selector);
    }
    observations_.push_back(
        make<Observation>(std::move(observer), *method, std::move(name), std::move(object)));
}

void NotificationCenter::removeObserver(const Object& observer) {
    std::vector<Ref<Observation>> kept;
    std::vector<Ref<Observation>> removed; // last, for an observer may end with it and call again
    for (const Ref<Observation>& each : observations_) {
        (each->belongsTo(observer) ? removed : kept).push_back(each);
    }
    for (const Ref<Observation>& each : removed) {
        each->remove();
    }
    observations_.swap(kept);
}

void NotificationCenter::postNotificationName_object(const Ref<String>& name, RefPtr<Object> object,
                                                     RefPtr<Dictionary> userInfo) {
    const auto notification = make<Notification>(name, std::move(object), std::move(userInfo));
    // Observers come and go while this one is passed on; those who come now have missed it.
    const std::vector<Ref<Observation>> snapshot = observations_;
    for (const Ref<Observation>& observation : snapshot) {
        if (observation->concerns(*notification)) {
            observation->pass(notification);
        }
    }
}

} // namespace NS
