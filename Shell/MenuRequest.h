#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Platform/Foundation/Array.h"

#include <string_view>

namespace Shell {

// What a menu is asked for: a kind, and what is selected and targeted.
struct MenuRequest {
    FI::MenuKind kind = FI::MenuKind::kContextualMenuForItems;
    NS::Ref<NS::Array> selection = NS::make<NS::Array>(); // of URLs
    NS::RefPtr<NS::URL> target;
};

// The extension's menu, made while the controller shows the request's selection and target; nil for
// none. Raises what the extension raises, and leaves the controller as it was then as well.
NS::RefPtr<NS::Menu> menuForRequest(FI::FinderSync& extension, const MenuRequest& request);

// Makes the menu and sends the action of its first enabled entry with that action. False when it
// has none: nobody can have the extension do what no menu offers. Raises what the extension raises.
bool runEntryOfMenu(FI::FinderSync& extension, const MenuRequest& request, std::string_view action);

} // namespace Shell
