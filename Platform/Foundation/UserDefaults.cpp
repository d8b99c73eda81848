#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/PropertyList.h"
#include "Platform/Foundation/UserDefaultsFile.h"

#include <mutex>

namespace NS {

constinit const Class UserDefaults::kClass{.name = "NSUserDefaults", .superclass = &Object::kClass};

namespace {

// Held from reading the file to replacing it.
constinit std::mutex settingMutex;

Ref<MutableDictionary> readSettings() {
    const RefPtr<Data> contents = UserDefaultsFile::read();
    RefPtr<String> ignored; // a damaged file reads as empty, whatever is wrong with it
    const auto settings =
        contents ? as<Dictionary>(propertyListWithData(*contents, ignored)) : nullptr;
    return settings ? settings->mutableCopy() : make<MutableDictionary>();
}

Ref<Data> encoded(const Dictionary& settings) {
    RefPtr<String> reason;
    const RefPtr<Data> contents = dataWithPropertyList(settings, reason);
    if (!contents) {
        Exception::raise(
            kInvalidArgumentException,
            stringWithFormat("attempt to set an object that no property list holds: %@", reason));
    }
    return Ref<Data>(*contents);
}

} // namespace

Ref<UserDefaults> UserDefaults::standardUserDefaults() {
    static const Ref<UserDefaults>& instance = *new Ref<UserDefaults>(make<UserDefaults>());
    return instance;
}

RefPtr<Object> UserDefaults::objectForKey(const String& key) const {
    return readSettings()->objectForKey(key);
}

bool UserDefaults::boolForKey(const String& key) const {
    const RefPtr<Object> value = objectForKey(key);
    const bool isReadable = as<Number>(value) || as<String>(value);
    return isReadable && boolValue(value);
}

void UserDefaults::setObject_forKey(const RefPtr<Object>& object, const String& key) {
    const std::lock_guard lock(settingMutex);
    const Ref<MutableDictionary> settings = readSettings();
    settings->setValue_forKey(object, key);
    // A setting that cannot be written is lost, as the header says.
    (void)UserDefaultsFile::replace(encoded(*settings)->bytes());
}

void UserDefaults::setBool_forKey(bool value, const String& key) {
    setObject_forKey(Number::numberWithBool(value), key);
}

void UserDefaults::removeObjectForKey(const String& key) {
    setObject_forKey(nullptr, key);
}

} // namespace NS
