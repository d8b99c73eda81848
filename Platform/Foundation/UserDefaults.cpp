#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Format.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/PropertyList.h"
#include "Platform/Foundation/SearchPaths.h"

#include <mutex>

namespace NS {

constinit const Class UserDefaults::kClass{.name = "NSUserDefaults", .superclass = &Object::kClass};

namespace {

// Held from reading the list to replacing it.
constinit std::mutex settingMutex;

Ref<String> listPath() {
    const auto name =
        ProcessInfo::processInfo()->processName()->stringByAppendingString(*str(".plist"));
    return preferencesDirectory()->stringByAppendingPathComponent(*name);
}

Ref<MutableDictionary> storedValues() {
    const auto data = FileManager::defaultManager().contentsAtPath(*listPath());
    RefPtr<String> ignored; // a damaged list counts as empty, whatever is wrong with it
    const auto values = data ? as<Dictionary>(propertyListWithData(*data, ignored)) : nullptr;
    return values ? values->mutableCopy() : make<MutableDictionary>();
}

Ref<Data> listOf(const Dictionary& values) {
    RefPtr<String> reason;
    const RefPtr<Data> list = dataWithPropertyList(values, reason);
    if (!list) {
        Exception::raise(
            kInvalidArgumentException,
            stringWithFormat("attempt to set an object that no property list holds: %@", reason));
    }
    return Ref<Data>(*list);
}

} // namespace

Ref<UserDefaults> UserDefaults::standardUserDefaults() {
    static const Ref<UserDefaults>& instance = *new Ref<UserDefaults>(make<UserDefaults>());
    return instance;
}

RefPtr<Object> UserDefaults::objectForKey(const String& key) const {
    return storedValues()->objectForKey(key);
}

bool UserDefaults::boolForKey(const String& key) const {
    const RefPtr<Object> value = objectForKey(key);
    return (as<Number>(value) || as<String>(value)) && NS::boolValue(value);
}

void UserDefaults::setObject_forKey(const RefPtr<Object>& object, const String& key) {
    const std::lock_guard lock(settingMutex);
    const Ref<MutableDictionary> values = storedValues();
    values->setValue_forKey(object, key);
    FileManager& files = FileManager::defaultManager();
    const Ref<Data> list = listOf(*values);
    (void)files.createDirectoryAtPath(*preferencesDirectory());
    (void)files.createFileAtPath_contents(*listPath(), list->bytes());
}

void UserDefaults::setBool_forKey(bool value, const String& key) {
    setObject_forKey(Number::numberWithBool(value), key);
}

void UserDefaults::removeObjectForKey(const String& key) {
    setObject_forKey(nullptr, key);
}

} // namespace NS
