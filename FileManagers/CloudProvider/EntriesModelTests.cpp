#include "FileManagers/CloudProvider/EntriesModel.h"

#include <gtest/gtest.h>

namespace {

using Shell::MenuEntry;
using Texts = std::vector<std::string>;

// What an attribute of an item holds.
std::string attribute(GMenuModel* menu, int item, const char* name) {
    char* text = nullptr;
    (void)g_menu_model_get_item_attribute(menu, item, name, "s", &text);
    const FileManagers::OwnedText owned(text);
    return text == nullptr ? "none" : text;
}

class EntriesModel : public testing::Test {
  protected:
    // Each item's label, its action, and whether that can be carried out.
    Texts items() {
        Texts texts;
        for (int i = 0; i < g_menu_model_get_n_items(model.menu()); ++i) {
            const std::string action = attribute(model.menu(), i, "action");
            EXPECT_EQ(action.substr(0, 5), "test.");
            const std::string name = action.substr(5);
            texts.push_back(
                attribute(model.menu(), i, "label") + " " + name +
                (g_action_group_get_action_enabled(model.actions(), name.c_str()) != FALSE
                     ? ""
                     : " off"));
        }
        return texts;
    }
    void activate(const char* name) {
        g_action_group_activate_action(model.actions(), name, nullptr);
    }
    // Notes how the menu changes, from now on.
    void follow() { g_signal_connect(model.menu(), "items-changed", G_CALLBACK(&changed), this); }
    static void changed(GMenuModel*, int position, int removed, int added, gpointer self) {
        static_cast<EntriesModel*>(self)->changes.push_back(std::to_string(position) + " -" +
                                                            std::to_string(removed) + " +" +
                                                            std::to_string(added));
    }

    Texts picked;
    Texts changes;
    FileManagers::EntriesModel model{"test", [this](const MenuEntry& entry) {
                                         picked.push_back(entry.title);
                                     }};
};

TEST_F(EntriesModel, ShowsTitlesAndWhatCanBePicked) {
    model.show({
        {"Do _It", "doIt:", true },
        {"Told",   "",      false},
        {"Off",    "off",   false},
        {"Told 2", "",      true }
    });
    EXPECT_EQ(items(), (Texts{"Do __It doIt-3a", "Told none-20 off", "Off none-20 off",
                              "Told 2 none-20 off"}));
}

TEST_F(EntriesModel, PicksTheFirstEntryWithAnAction) {
    const std::vector<MenuEntry> entries{
        {"One", "one", true},
        {"Two", "two", true},
        {"Too", "two", true}
    };
    model.show(entries);
    activate("two");
    activate("none-20");
    activate("three");
    EXPECT_EQ(picked, Texts{"Two"});
}

TEST_F(EntriesModel, PicksByWhatAnEntryDoesWhereverItStandsByNow) {
    model.show({
        {"One", "one", true},
        {"Two", "two", true}
    });
    model.show({
        {"Two, newer", "two", true}
    });
    activate("two");
    activate("one");
    EXPECT_EQ(picked, Texts{"Two, newer"});
    EXPECT_EQ(items(), Texts{"Two, newer two"});
}

TEST_F(EntriesModel, TellsApartActionsThatDifferInOneByte) {
    model.show({
        {"One", "do:", true},
        {"Two", "do_", true}
    });
    EXPECT_EQ(items(), (Texts{"One do-3a", "Two do-5f"}));
}

TEST_F(EntriesModel, LeavesAloneWhatStaysTheSame) {
    const MenuEntry first{"First", "first", true};
    const MenuEntry last{"Last", "", false};
    model.show({
        first, {"Two", "two", true},
         last
    });
    follow();
    model.show({
        first, {"Two", "two", true},
         last
    });
    EXPECT_EQ(changes, Texts{});
    model.show({
        first, {"Three", "three", true},
         last, last
    });
    EXPECT_EQ(changes, (Texts{"1 -1 +0", "1 -0 +1", "3 -0 +1"}));
    EXPECT_EQ(items(),
              (Texts{"First first", "Three three", "Last none-20 off", "Last none-20 off"}));
    model.show({first});
    EXPECT_EQ(items(), Texts{"First first"});
    model.show({});
    EXPECT_EQ(items(), Texts{});
}

} // namespace
