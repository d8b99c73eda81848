#pragma once

#include "Shell/Client/FinderClient.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace Shell {

// What a menu takes at most, far more than anybody reads: a file manager makes a widget of each
// entry, in the thread of its windows.
inline constexpr std::size_t kLongestMenu = std::size_t{1} << 20U;
inline constexpr std::size_t kMostEntries = 1000;

// The menu that bytes are, in the form that Docs/finder-bus.md describes. Nothing when they are
// too many, or their entries are, of another form, cut off, or no UTF-8.
std::optional<Menu> decodedMenu(std::string_view bytes);

} // namespace Shell
