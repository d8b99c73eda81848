#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

namespace NS {

// Small settings of this process's program: one property list in the user's folder for them, read
// and written at each call, so that every process sees what another stored. Failures to write are
// silent. Any thread.
class UserDefaults final : public Object {
    NS_OBJECT(UserDefaults)
  public:
    static Ref<UserDefaults> standardUserDefaults();

    // Nil when nothing is stored, or the list cannot be read.
    RefPtr<Object> objectForKey(const String& key) const;
    // False when nothing is stored, or nothing that reads as a truth value.
    bool boolForKey(const String& key) const;

    // Raises NSInvalidArgumentException for an object that property lists do not have.
    void setObject_forKey(const RefPtr<Object>& object, const String& key);
    void setBool_forKey(bool value, const String& key);
    void removeObjectForKey(const String& key);
};

} // namespace NS
