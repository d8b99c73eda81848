#pragma once

#include "Shell/Client/FinderClient.h"

#include <string>
#include <string_view>

// {"title":…,"items":[{"title":…,"action":…,"enabled":…}]} in menu order, on one line; the action
// of an entry that has none is null.
std::string jsonOf(const Shell::Menu& menu);
std::string jsonOf(const Shell::MenuEntry& entry);

enum class Dimming : bool { kNone, kTerminal };

// A line for each entry as a person would see it, those that cannot be picked dimmed where the
// output is a terminal.
std::string textOf(const Shell::Menu& menu, Dimming dimming);

// The entry that a title means: the one of just this title, else the one whose title goes on with a
// count in parentheses, so that "Empty Trash" means "Empty Trash (3)". Null when there is none.
const Shell::MenuEntry* entryTitled(const Shell::Menu& menu, std::string_view title);

// Text without what would steer a terminal.
std::string printable(std::string_view text);
