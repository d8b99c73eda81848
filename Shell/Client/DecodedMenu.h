#pragma once

#include "Shell/Client/FinderClient.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace Shell {

// What a menu takes at most, far more than anybody reads; its entries take some thirty times as
// much memory.
inline constexpr std::size_t kLongestMenu = std::size_t{1} << 20U;

// The menu that bytes are, in the form that Docs/finder-bus.md describes. Nothing when they are
// too many, of another form, cut off, or no UTF-8.
std::optional<Menu> decodedMenu(std::string_view bytes);

} // namespace Shell
