#include "Platform/Foundation/Object.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Hashing.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <string>

namespace NS {

constinit const Class Object::kClass{.name = "NSObject"};

constinit const ClassRegistration* ClassRegistration::first_ = nullptr;

ClassRegistration::ClassRegistration(const Class& registered) noexcept
    : class_(registered), next_(first_) {
    first_ = this;
}

const Class* classNamed(std::string_view name) noexcept {
    for (const ClassRegistration* r = ClassRegistration::first_; r != nullptr; r = r->next_) {
        if (r->class_.name == name) {
            return &r->class_;
        }
    }
    return nullptr;
}

const Method* Class::methodForSelector(std::string_view selector) const noexcept {
    for (const Class* c = this; c != nullptr; c = c->superclass) {
        for (const Method& candidate : c->methods) {
            if (candidate.selector.name == selector) {
                return &candidate;
            }
        }
    }
    return nullptr;
}

const Property* Class::propertyForKey(std::string_view key) const noexcept {
    for (const Class* c = this; c != nullptr; c = c->superclass) {
        for (const Property& property : c->properties) {
            if (property.key == key) {
                return &property;
            }
        }
    }
    return nullptr;
}

std::size_t Object::hash() const {
    return hashOfInteger(reinterpret_cast<std::uintptr_t>(this));
}

Ref<String> Object::description() const {
    return stringWithFormat("<%s: %p>", objectClass().name, static_cast<const void*>(this));
}

void Object::encodeWithCoder(KeyedArchiver&) const {
    raiseUnrecognizedSelector(*this, Selector{"encodeWithCoder:"});
}

void Object::initWithCoder(KeyedUnarchiver&) {
    raiseUnrecognizedSelector(*this, Selector{"initWithCoder:"});
}

void raiseUnrecognizedSelector(const Object& receiver, Selector selector) {
    Exception::raise(kInvalidArgumentException,
                     stringWithFormat("-[%s %s]: unrecognized selector sent to instance %p",
                                      receiver.objectClass().name,
                                      std::string(selector.name).c_str(),
                                      static_cast<const void*>(&receiver)));
}

void raiseUnrecognizedSelector(const Object& receiver, const Class& expected) {
    Exception::raise(
        kInvalidArgumentException,
        stringWithFormat("unrecognized selector sent to instance %p: it is a %s and is "
                         "used as a %s",
                         static_cast<const void*>(&receiver), receiver.objectClass().name,
                         expected.name));
}

} // namespace NS
