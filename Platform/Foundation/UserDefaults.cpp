#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/PropertyList.h"
#include "Platform/Foundation/SearchPaths.h"

namespace NS {

constinit const Class UserDefaults::kClass{.name = "NSUserDefaults", .superclass = &Object::kClass};

namespace {

Ref<String> listPath() {
    const auto name =
        ProcessInfo::processInfo()->processName()->stringByAppendingString(*str(".plist"));
    return preferencesDirectory()->stringByAppendingPathComponent(*name);
}

Ref<MutableDictionary> storedValues() {
    const auto data = FileManager::defaultManager().contentsAtPath(*listPath());
    const auto values = data ? as<Dictionary>(propertyListValue(*data)) : nullptr;
    return values ? values->mutableCopy() : make<MutableDictionary>();
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
    const Ref<MutableDictionary> values = storedValues();
    values->setValue_forKey(object, key);
    FileManager& files = FileManager::defaultManager();
    (void)files.createDirectoryAtPath(*preferencesDirectory());
    (void)files.createFileAtPath_contents(*listPath(), propertyListData(*values)->bytes());
}

void UserDefaults::setBool_forKey(bool value, const String& key) {
    setObject_forKey(Number::numberWithBool(value), key);
}

void UserDefaults::removeObjectForKey(const String& key) {
    setObject_forKey(nullptr, key);
}

} // namespace NS
