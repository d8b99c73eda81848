#pragma once

#include "FileManagers/GLib/Owned.h"
#include "Shell/Client/FinderClient.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gio/gio.h>

namespace FileManagers {

// Entries as GLib's menus have them: a model of what is shown, and a group of the actions that it
// names. Both change in place, so that whoever shows them shows what they are now.
//
// An action goes by what it does, not by where it stands: what a user picks is what he saw, also
// when the menu changes under his hand.
class EntriesModel {
  public:
    using OnPick = std::function<void(const Shell::MenuEntry&)>;

    // Programs put the actions under a name of their own, the prefix, before they show the menu.
    EntriesModel(const char* prefix, OnPick onPick);
    ~EntriesModel();
    EntriesModel(const EntriesModel&) = delete;
    EntriesModel& operator=(const EntriesModel&) = delete;

    void show(const std::vector<Shell::MenuEntry>& entries);

    GMenuModel* menu() const noexcept { return G_MENU_MODEL(menu_.get()); }
    GActionGroup* actions() const noexcept { return G_ACTION_GROUP(actions_.get()); }

  private:
    static void activated(GSimpleAction* action, GVariant*, gpointer self);
    void removeActionsExcept(const std::map<std::string, Shell::MenuEntry>& entries);
    void addAction(const std::string& name, bool isEnabled);
    void showItems(const std::vector<Shell::MenuEntry>& entries);

    std::string prefix_;
    OnPick onPick_;
    OwnedObject<GMenu> menu_{g_menu_new()};
    OwnedObject<GSimpleActionGroup> actions_{g_simple_action_group_new()};
    std::vector<Shell::MenuEntry> shown_;
    std::map<std::string, Shell::MenuEntry> picks_; // by the names of their actions
};

} // namespace FileManagers
