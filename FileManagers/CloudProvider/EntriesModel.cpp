#include "FileManagers/CloudProvider/EntriesModel.h"

#include "FileManagers/Shared/Drive.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace FileManagers {

using Shell::MenuEntry;

namespace {

// The action of all entries that cannot be picked. No selector has a blank's code in its name.
constexpr const char* kNone = "none-20";

bool isPlain(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

// GLib's names of actions hold letters, digits, "-" and "."; another byte becomes its code.
std::string actionName(const MenuEntry& entry) {
    constexpr const char* kDigits = "0123456789abcdef";
    if (!entry.enabled || entry.action.empty()) {
        return kNone;
    }
    std::string name;
    for (const char character : entry.action) {
        if (isPlain(character)) {
            name += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            name.append({'-', kDigits[byte / 16], kDigits[byte % 16]});
        }
    }
    return name;
}

} // namespace

EntriesModel::EntriesModel(const char* prefix, OnPick onPick)
    : prefix_(prefix), onPick_(std::move(onPick)) {
    addAction(kNone, false);
}

EntriesModel::~EntriesModel() {
    removeActionsExcept({});
}

void EntriesModel::show(const std::vector<MenuEntry>& entries) {
    std::map<std::string, MenuEntry> picks;
    for (const MenuEntry& entry : entries) {
        if (const std::string name = actionName(entry); name != kNone) {
            picks.emplace(name, entry); // of two the first, as the extension takes it
            addAction(name, true);
        }
    }
    removeActionsExcept(picks);
    picks_ = std::move(picks);
    showItems(entries);
}

void EntriesModel::addAction(const std::string& name, bool isEnabled) {
    if (g_action_map_lookup_action(G_ACTION_MAP(actions_.get()), name.c_str()) != nullptr) {
        return;
    }
    const OwnedObject<GSimpleAction> action(g_simple_action_new(name.c_str(), nullptr));
    g_simple_action_set_enabled(action.get(), isEnabled ? TRUE : FALSE);
    g_signal_connect(action.get(), "activate", G_CALLBACK(&activated), this);
    g_action_map_add_action(G_ACTION_MAP(actions_.get()), G_ACTION(action.get()));
}

// What a bus still holds of the group may outlive this object, and must not call it.
void EntriesModel::removeActionsExcept(const std::map<std::string, MenuEntry>& entries) {
    for (const auto& [name, entry] : picks_) {
        if (!entries.contains(name)) {
            g_action_map_remove_action(G_ACTION_MAP(actions_.get()), name.c_str());
        }
    }
}

// What stays the same is left alone, as a menu that is open flickers with each change.
void EntriesModel::showItems(const std::vector<MenuEntry>& entries) {
    for (std::size_t i = 0; i < std::max(entries.size(), shown_.size()); ++i) {
        if (i < std::min(entries.size(), shown_.size()) && entries[i] == shown_[i]) {
            continue;
        }
        const auto position = static_cast<int>(std::min(i, entries.size()));
        if (i < shown_.size()) {
            g_menu_remove(menu_.get(), position);
        }
        if (i < entries.size()) {
            const std::string action = prefix_ + "." + actionName(entries[i]);
            g_menu_insert(menu_.get(), position, withoutMnemonics(entries[i].title, '_').c_str(),
                          action.c_str());
        }
    }
    shown_ = entries;
}

void EntriesModel::activated(GSimpleAction* action, GVariant*, gpointer self) {
    auto* const model = static_cast<EntriesModel*>(self);
    const auto found = model->picks_.find(g_action_get_name(G_ACTION(action)));
    if (found != model->picks_.end()) {
        const MenuEntry entry = found->second; // which carrying it out may replace
        model->onPick_(entry);
    }
}

} // namespace FileManagers
