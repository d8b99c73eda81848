#include "Programs/Finder/MenuText.h"

#include <nlohmann/json.hpp>

#include <algorithm>

using Json = nlohmann::ordered_json;

namespace {

constexpr const char* kDim = "\033[2m";
constexpr const char* kNormal = "\033[0m";

Json entryJson(const Shell::MenuEntry& entry) {
    return {
        {"title",   entry.title                                       },
        {"action",  entry.action.empty() ? Json() : Json(entry.action)},
        {"enabled", entry.enabled                                     }
    };
}

std::string oneLine(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool isCountAfter(std::string_view title, std::string_view beginning) {
    return title.starts_with(beginning) && title.substr(beginning.size()).starts_with(" (") &&
           title.ends_with(')');
}

} // namespace

std::string jsonOf(const Shell::Menu& menu) {
    Json items = Json::array();
    for (const Shell::MenuEntry& entry : menu.entries) {
        items.push_back(entryJson(entry));
    }
    return oneLine({
        {"title", menu.title      },
        {"items", std::move(items)}
    });
}

std::string jsonOf(const Shell::MenuEntry& entry) {
    return oneLine(entryJson(entry));
}

std::string textOf(const Shell::Menu& menu, Dimming dimming) {
    std::string text;
    for (const Shell::MenuEntry& entry : menu.entries) {
        const bool dimmed = !entry.enabled && dimming == Dimming::kTerminal;
        text += dimmed ? kDim + printable(entry.title) + kNormal : printable(entry.title);
        text += '\n';
    }
    return text;
}

const Shell::MenuEntry* entryTitled(const Shell::Menu& menu, std::string_view title) {
    const auto exact = std::ranges::find(menu.entries, title, &Shell::MenuEntry::title);
    if (exact != menu.entries.end()) {
        return &*exact;
    }
    const auto counted = std::ranges::find_if(menu.entries, [&](const Shell::MenuEntry& entry) {
        return isCountAfter(entry.title, title);
    });
    return counted != menu.entries.end() ? &*counted : nullptr;
}

std::string printable(std::string_view text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0U;
        if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            shown.push_back('?'); // one of the controls above ASCII, in UTF-8
            ++i;
        } else {
            shown.push_back(byte < 0x20 || byte == 0x7F ? '?' : text[i]);
        }
    }
    return shown;
}
