#include "Shell/Client/DecodedMenu.h"

#include "Platform/Foundation/Utf8.h"
#include "Shell/FinderInterface.h"

#include <utility>

namespace Shell {

namespace {

constexpr std::size_t kUsualEntries = 4;

// Each takes what the bytes begin with; false when that is something else.

bool takeText(std::string_view& bytes, std::string& text) {
    const std::size_t end = bytes.find('\0');
    if (end == std::string_view::npos) {
        return false;
    }
    text = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    return true;
}

bool takeFlag(std::string_view& bytes, bool& flag) {
    flag = bytes.starts_with('\1');
    if (!flag && !bytes.starts_with('\0')) {
        return false;
    }
    bytes.remove_prefix(1);
    return true;
}

bool takeEntry(std::string_view& bytes, MenuEntry& entry) {
    return takeFlag(bytes, entry.enabled) && takeText(bytes, entry.title) &&
           takeText(bytes, entry.action);
}

} // namespace

std::optional<Menu> decodedMenu(std::string_view bytes) {
    // What ends a text is a character, so that all are UTF-8 when the whole is.
    if (bytes.size() > kLongestMenu || !bytes.starts_with(FinderInterface::kMenuForm) ||
        !NS::Utf8::isValid(bytes)) {
        return std::nullopt;
    }
    bytes.remove_prefix(1);
    Menu menu;
    if (!takeText(bytes, menu.title)) {
        return std::nullopt;
    }
    menu.entries.reserve(kUsualEntries);
    while (!bytes.empty()) {
        if (menu.entries.size() == kMostEntries || !takeEntry(bytes, menu.entries.emplace_back())) {
            return std::nullopt;
        }
    }
    return menu;
}

} // namespace Shell
