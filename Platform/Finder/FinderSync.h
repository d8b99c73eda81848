#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/URL.h"

namespace FI {

// What a file manager calls on its extension; the base does nothing. Main thread.
class FinderSync : public NS::Object {
    NS_OBJECT(FinderSync)
  public:
    // A window begins, or stops, showing a folder at or below a watched one.
    virtual void beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url);
    virtual void endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url);
    // An item became visible and could carry a badge.
    virtual void requestBadgeIdentifierForURL(const NS::Ref<NS::URL>& url);
};

} // namespace FI
