#pragma once

#include "Platform/Finder/Menu.h"

#include <string>

namespace Shell {

// The bytes of a menu, as Docs/finder-bus.md describes them; nil is one without title and entries.
// A text ends at its first NUL. Main thread.
std::string encodedMenu(const NS::RefPtr<NS::Menu>& menu);

} // namespace Shell
