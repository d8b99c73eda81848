#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

namespace NS {

namespace {

[[noreturn]] void raiseUnknownKey(const Object& object, const char* operation, const String& key) {
    Exception::raise(
        kUnknownKeyException,
        stringWithFormat(
            "[<%s %p> %s]: this class is not key value coding-compliant for the key %@.",
            object.objectClass().name, static_cast<const void*>(&object), operation, &key));
}

struct KeyPath {
    Ref<String> firstKey;
    RefPtr<String> rest; // nil when the first key is the whole path
};

KeyPath split(const String& path) {
    static const Ref<String>& dot = *new Ref<String>(str("."));
    const auto position = path.rangeOfString(dot);
    if (!position) {
        return {path.substringFromIndex(0), nullptr};
    }
    return {path.substringToIndex(*position), path.substringFromIndex(*position + 1)};
}

} // namespace

void raiseNilForScalar(const Object& object, std::string_view key) {
    Exception::raise(kInvalidArgumentException,
                     stringWithFormat("[<%s %p> setNilValueForKey]: could not set nil as the value "
                                      "for the key %@.",
                                      object.objectClass().name, static_cast<const void*>(&object),
                                      str(key)));
}

RefPtr<Object> Object::valueForKey(const String& key) const {
    const Property* const property = objectClass().propertyForKey(key.utf8());
    if (property == nullptr) {
        raiseUnknownKey(*this, "valueForUndefinedKey:", key);
    }
    return property->get(*this);
}

void Object::setValue_forKey(RefPtr<Object> value, const String& key) {
    const Property* const property = objectClass().propertyForKey(key.utf8());
    if (property == nullptr) {
        raiseUnknownKey(*this, "setValue:forUndefinedKey:", key);
    }
    property->set(*this, std::move(value));
}

RefPtr<Object> Object::valueForKeyPath(const String& path) const {
    const KeyPath keys = split(path);
    const RefPtr<Object> value = valueForKey(keys.firstKey);
    return keys.rest && value ? value->valueForKeyPath(*keys.rest) : value;
}

void Object::setValue_forKeyPath(RefPtr<Object> value, const String& path) {
    const KeyPath keys = split(path);
    if (!keys.rest) {
        setValue_forKey(std::move(value), path);
    } else if (const RefPtr<Object> next = valueForKey(keys.firstKey)) {
        next->setValue_forKeyPath(std::move(value), *keys.rest);
    }
}

} // namespace NS
