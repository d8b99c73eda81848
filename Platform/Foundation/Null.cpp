#include "Platform/Foundation/Null.h"

#include "Platform/Foundation/String.h"

namespace NS {

constinit const Class Null::kClass{.name = "NSNull", .superclass = &Object::kClass};

Ref<Null> Null::null() {
    static const Ref<Null>& instance = *new Ref<Null>(make<Null>());
    return instance;
}

Ref<String> Null::description() const {
    return str("<null>");
}

} // namespace NS
