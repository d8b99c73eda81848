#pragma once

#include "Platform/Foundation/Dictionary.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

namespace NS {

// The user's settings for this program: a small property list per process name, in the folder
// "Quorvane" of the user's configuration folder. Every call reads the file as it is now. Any
// thread; two processes of one name that set at the same moment may lose one of the two settings,
// but never the file.
class UserDefaults final : public Object {
    NS_OBJECT(UserDefaults)
  public:
    static Ref<UserDefaults> standardUserDefaults();

    // Nil where nothing is set, also when the file is missing or damaged.
    RefPtr<Object> objectForKey(const String& key) const;
    // False where nothing is set, or something that is neither number nor text.
    bool boolForKey(const String& key) const;

    // Replaces the file as a whole; one that is damaged counts as empty. Raises
    // NSInvalidArgumentException for an object that no property list holds. Where the system will
    // not have it written, the setting is lost.
    void setObject_forKey(const RefPtr<Object>& object, const String& key);
    void setBool_forKey(bool value, const String& key);
    void removeObjectForKey(const String& key);
};

} // namespace NS
