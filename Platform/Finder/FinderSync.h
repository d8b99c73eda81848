#pragma once

#include "Platform/Finder/Image.h"
#include "Platform/Finder/Menu.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/URL.h"

#include <cstdint>

namespace FI {

// What a file manager shows when it asks for a menu. The numbers are the platform's; others may
// come.
enum class MenuKind : std::uint64_t {
    kContextualMenuForItems = 0,
    kContextualMenuForContainer = 1,
    kContextualMenuForSidebar = 2,
    kToolbarItemMenu = 3,
};

// What a file manager calls on its extension; the base shows nothing and does nothing. Main thread.
class FinderSync : public NS::Object {
    NS_OBJECT(FinderSync)
  public:
    // A window begins, or stops, showing a folder at or below a watched one.
    virtual void beginObservingDirectoryAtURL(const NS::Ref<NS::URL>& url);
    virtual void endObservingDirectoryAtURL(const NS::Ref<NS::URL>& url);
    // An item became visible and could carry a badge.
    virtual void requestBadgeIdentifierForURL(const NS::Ref<NS::URL>& url);

    // The menu that is about to be shown, made afresh; nil for none. What it is about stands in the
    // FinderSyncController.
    virtual NS::RefPtr<NS::Menu> menuForMenuKind(MenuKind kind);

    // The toolbar item: what it is called, what is told about it, what it looks like. Nil for none.
    virtual NS::RefPtr<NS::String> toolbarItemName();
    virtual NS::RefPtr<NS::String> toolbarItemToolTip();
    virtual NS::RefPtr<NS::Image> toolbarItemImage();
};

} // namespace FI
