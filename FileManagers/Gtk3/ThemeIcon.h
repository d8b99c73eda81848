#pragma once

#include "Shell/Client/FinderClient.h"

namespace FileManagers {

// The name of the toolbar item's image in the icon theme, which is shown where it stands in case it
// is not among the installed ones.
const char* themeIcon(const Shell::ToolbarItem& item);

} // namespace FileManagers
