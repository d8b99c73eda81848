#include "Shell/EncodedMenu.h"

#include "Shell/FinderInterface.h"

#include <string_view>

namespace Shell {

namespace {

void appendText(std::string& bytes, std::string_view text) {
    bytes.append(text.substr(0, text.find('\0'))).push_back('\0');
}

void appendEntry(std::string& bytes, const NS::MenuItem& entry) {
    bytes.push_back(static_cast<char>(entry.isEnabled()));
    appendText(bytes, entry.title()->utf8());
    appendText(bytes, entry.action().name);
}

} // namespace

std::string encodedMenu(const NS::RefPtr<NS::Menu>& menu) {
    std::string bytes(1, FinderInterface::kMenuForm);
    if (!menu) {
        appendText(bytes, "");
        return bytes;
    }
    appendText(bytes, menu->title()->utf8());
    for (const NS::Ref<NS::MenuItem>& entry : menu->itemArray()) {
        appendEntry(bytes, *entry);
    }
    return bytes;
}

} // namespace Shell
