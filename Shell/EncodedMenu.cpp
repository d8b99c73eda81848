#include "Shell/EncodedMenu.h"

#include "Shell/FinderInterface.h"

#include <cstddef>
#include <string_view>

namespace Shell {

namespace {

constexpr std::size_t kUsualLength = 256;

void appendText(std::string& bytes, std::string_view text) {
    bytes.append(text.substr(0, text.find('\0'))).push_back('\0');
}

void appendText(std::string& bytes, const NS::String& text) {
    if (text.isAscii()) {
        appendText(bytes, text.ascii());
    } else {
        appendText(bytes, std::string_view(text.utf8()));
    }
}

void appendEntry(std::string& bytes, const NS::MenuItem& entry) {
    bytes.push_back(static_cast<char>(entry.isEnabled()));
    appendText(bytes, *entry.title());
    appendText(bytes, entry.action().name);
}

} // namespace

std::string encodedMenu(const NS::RefPtr<NS::Menu>& menu) {
    std::string bytes;
    bytes.reserve(kUsualLength);
    bytes.push_back(FinderInterface::kMenuForm);
    if (!menu) {
        bytes.push_back('\0');
        return bytes;
    }
    appendText(bytes, *menu->title());
    for (const NS::Ref<NS::MenuItem>& entry : menu->itemArray()) {
        appendEntry(bytes, *entry);
    }
    return bytes;
}

} // namespace Shell
