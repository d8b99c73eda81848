#include "Platform/Finder/MenuItem.h"

#include <array>
#include <span>

namespace NS {

constinit const Class MenuItem::kClass{.name = "NSMenuItem", .superclass = &Object::kClass};

void MenuItem::sendAction(Object& receiver) {
    if (action_.name.empty()) {
        return;
    }
    const Ref<Object> called(target_ ? *target_ : receiver);
    const Method* const method = called->methodForSelector(action_);
    if (method == nullptr || action_.argumentCount() > 1) {
        raiseUnrecognizedSelector(*called, action_);
    }
    const std::array<RefPtr<Object>, 1> sender{RefPtr<Object>(this)};
    method->invoke(*called, std::span(sender).first(action_.argumentCount()));
}

} // namespace NS
