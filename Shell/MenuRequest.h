#pragma once

#include "Platform/Finder/FinderSync.h"
#include "Platform/Finder/Selection.h"

#include <functional>
#include <string_view>

namespace Shell {

// What a menu is asked for: a kind, and what is selected and targeted.
struct MenuRequest {
    FI::MenuKind kind = FI::MenuKind::kContextualMenuForItems;
    NS::RefPtr<FI::Selection> selection; // nil is none
    NS::RefPtr<NS::URL> target;
};

// The extension's menu, made while the controller shows the request's selection and target; nil for
// none. Raises what the extension raises, and leaves the controller as it was then as well.
NS::RefPtr<NS::Menu> menuForRequest(FI::FinderSync& extension, const MenuRequest& request);

enum class RunResult : char { kDone, kNotInMenu, kTooLate };

// Makes the menu and sends the action of its first enabled entry with that action, unless it has
// none, since nobody is to have the extension do what no menu offers, or it is too late by then.
// Raises what the extension raises.
RunResult runEntryOfMenu(FI::FinderSync& extension, const MenuRequest& request,
                         std::string_view action, const std::function<bool()>& isTooLate);

} // namespace Shell
