#include "FileManagers/CloudProvider/SidebarEntry.h"

#include "FileManagers/CloudProvider/Testing/BusFixture.h"
#include "FileManagers/CloudProvider/Testing/FakeDesktop.h"
#include "FileManagers/GLib/DriveLoop.h"

#include <filesystem>
#include <fstream>

namespace {

using FileManagers::OwnedObject;
using FileManagers::OwnedText;

std::string textOf(GVariant* properties, const char* name) {
    const char* text = nullptr;
    return g_variant_lookup(properties, name, "&s", &text) != FALSE ? text : "none";
}

// The drive on a bus, and a sidebar that looks at it there.
class SidebarEntry : public Tests::GLibBusTest {
  protected:
    ~SidebarEntry() override {
        menu.reset();
        actions.reset();
        entry.reset();
        loop.reset();
    }

    void serve() {
        drive.emplace(times);
        loop.emplace(*drive);
        entry.emplace(*drive, served.get());
    }
    void serveWithExtension() {
        extension.emplace(Titles{"file:///mnt/Drive"});
        extension->appear();
        serve();
        ASSERT_TRUE(waitForAccounts({kIdle}));
    }
    // Of each account: its object, name, path, icon, status and details.
    Titles accounts() {
        Titles texts;
        const Tests::Variant answer =
            call(FileManagers::SidebarEntry::kObject, "org.freedesktop.DBus.ObjectManager",
                 "GetManagedObjects");
        GVariantIter* objects = nullptr;
        const char* path = nullptr;
        GVariant* interfaces = nullptr;
        g_variant_get(answer.get(), "(a{oa{sa{sv}}})", &objects);
        while (g_variant_iter_loop(objects, "{&o@a{sa{sv}}}", &path, &interfaces) != FALSE) {
            const Tests::Variant account(g_variant_lookup_value(
                interfaces, "org.freedesktop.CloudProviders.Account", G_VARIANT_TYPE("a{sv}")));
            if (account) {
                texts.push_back(describe(path, account.get()));
            }
        }
        g_variant_iter_free(objects);
        return texts;
    }
    static std::string describe(const std::string& path, GVariant* account) {
        gint32 status = -1;
        (void)g_variant_lookup(account, "Status", "i", &status);
        return path.substr(path.rfind('/') + 1) + " " + textOf(account, "Name") + " " +
               textOf(account, "Path") + " " + textOf(account, "Icon") + " " +
               std::to_string(status) + " " + textOf(account, "StatusDetails");
    }
    bool waitForAccounts(const Titles& expected) {
        return runUntil([&] { return accounts() == expected; });
    }
    // Begins to show the menu of an account.
    void open(const std::string& account) {
        const std::string object = std::string(FileManagers::SidebarEntry::kObject) + "/" + account;
        const char* const name = g_dbus_connection_get_unique_name(served.get());
        menu.reset(G_MENU_MODEL(g_dbus_menu_model_get(looking.get(), name, object.c_str())));
        actions.reset(G_ACTION_GROUP(g_dbus_action_group_get(looking.get(), name, object.c_str())));
    }
    // The titles of what it shows, those that cannot be picked in brackets.
    Titles titles() {
        Titles texts;
        for (int i = 0; i < g_menu_model_get_n_items(menu.get()); ++i) {
            const std::string action = attribute(i, "action");
            const std::string title = attribute(i, "label");
            EXPECT_TRUE(action.starts_with("cloudprovider."));
            const std::string name = action.substr(action.find('.') + 1);
            const bool isEnabled =
                g_action_group_get_action_enabled(actions.get(), name.c_str()) != FALSE;
            texts.push_back(isEnabled ? title : "[" + title + "]");
        }
        return texts;
    }
    std::string attribute(int position, const char* name) {
        char* text = nullptr;
        (void)g_menu_model_get_item_attribute(menu.get(), position, name, "s", &text);
        const OwnedText owned(text);
        return text == nullptr ? "none" : text;
    }
    bool waitForTitles(const Titles& expected) {
        return runUntil([&] { return titles() == expected; });
    }

    static constexpr const char* kIdle =
        "Drive1 Fake Drive /mnt/Drive FakeImage-symbolic 1 Fake tip";
    const std::string kHostLine = "[The host has not answered]";
    std::optional<FileManagers::DriveLoop> loop;
    std::optional<FileManagers::SidebarEntry> entry;
    OwnedObject<GMenuModel> menu;
    OwnedObject<GActionGroup> actions;
};

TEST_F(SidebarEntry, HasNoAccountWithoutAnExtension) {
    serve();
    EXPECT_EQ(accounts(), Titles{});
}

TEST_F(SidebarEntry, HasAnAccountForAsLongAsThereIsAnExtension) {
    serveWithExtension();
    extension.reset();
    EXPECT_TRUE(waitForAccounts({}));
    extension.emplace(Titles{"file:///mnt/Drive"});
    ASSERT_TRUE(waitForAccounts({}));
    extension->appear();
    EXPECT_TRUE(waitForAccounts({"Drive2 Fake Drive /mnt/Drive FakeImage-symbolic 1 Fake tip"}));
}

TEST_F(SidebarEntry, SaysThatTheHostHasNotAnsweredAndThenHasAnAccountForTheDrive) {
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->wait();
    serve();
    EXPECT_TRUE(waitForAccounts({"Drive1 Fennmoor Cloud " + std::string(g_get_home_dir()) +
                                 " MainOnline-symbolic 2 The host has not answered"}));
    open("Drive1");
    EXPECT_TRUE(waitForTitles({kHostLine}));
    extension->appear();
    EXPECT_TRUE(waitForAccounts({"Drive2 Fake Drive /mnt/Drive FakeImage-symbolic 1 Fake tip"}));
}

TEST_F(SidebarEntry, HasTheEntriesOfTheToolbarsMenu) {
    serveWithExtension();
    open("Drive1");
    EXPECT_TRUE(waitForTitles({"Do It", "[Told]"}));
    extension->setMenu({"Fake", {{"Other", "other", true}}});
    extension->changeGeneration();
    EXPECT_TRUE(waitForTitles({"Other"}));
}

TEST_F(SidebarEntry, AsksAnewWhenItsMenuIsOpened) {
    serveWithExtension();
    extension->setMenu({"Fake", {{"Other", "other", true}}});
    open("Drive1");
    EXPECT_TRUE(waitForTitles({"Other"}));
}

TEST_F(SidebarEntry, SaysInAnOpenMenuThatTheHostHasNotAnswered) {
    serveWithExtension();
    open("Drive1");
    ASSERT_TRUE(waitForTitles({"Do It", "[Told]"}));
    extension->changeHostAnswers(false);
    EXPECT_TRUE(waitForTitles({"Do It", "[Told]", kHostLine}));
    EXPECT_TRUE(waitForAccounts(
        {"Drive1 Fake Drive /mnt/Drive FakeImage-symbolic 3 The host has not answered"}));
    extension->changeHostAnswers(true);
    EXPECT_TRUE(waitForTitles({"Do It", "[Told]"}));
    EXPECT_TRUE(waitForAccounts({kIdle}));
}

TEST_F(SidebarEntry, CarriesOutWhatIsPicked) {
    serveWithExtension();
    open("Drive1");
    ASSERT_TRUE(waitForTitles({"Do It", "[Told]"}));
    g_action_group_activate_action(actions.get(), "doIt-3a", nullptr);
    EXPECT_TRUE(
        runUntil([&] { return asked().back() == "RunOnPaths 3 doIt: [] /mnt/Drive later"; }));
}

TEST_F(SidebarEntry, TellsWhatWasPickedAndNotDone) {
    Tests::FakeDesktop desktop(looking.get());
    serveWithExtension();
    open("Drive1");
    ASSERT_TRUE(waitForTitles({"Do It", "[Told]"}));
    extension->refuseWith("com.Quorvane.Quorvane.QVFinderExtension.Error.NotInMenu", "none");
    g_action_group_activate_action(actions.get(), "doIt-3a", nullptr);
    EXPECT_TRUE(runUntil([&] { return !desktop.shown.empty(); }));
    EXPECT_EQ(desktop.shown,
              Titles{"Fennmoor Cloud 0 MainOnline: “Do It” could not be carried out: "
                     "This is no longer possible here. Nothing was done."});
}

TEST_F(SidebarEntry, ShowsAnIconAlsoWhereItsFileIsNoText) {
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->setImageFile("file://" + folders.root().string() + "/%FF/scalable/apps/A.svg");
    const auto symbolic = folders.root() / "\xFF" / "symbolic/apps/FakeImage-symbolic.svg";
    std::filesystem::create_directories(symbolic.parent_path());
    std::ofstream(symbolic) << "<svg/>";
    extension->appear();
    serve();
    EXPECT_TRUE(waitForAccounts({"Drive1 Fake Drive /mnt/Drive MainOnline-symbolic 1 Fake tip"}));
}

TEST_F(SidebarEntry, TakesItsAccountWithAllOfItFromTheBus) {
    serveWithExtension();
    entry.reset();
    EXPECT_EQ(accounts(), Titles{});
    const std::string object = std::string(FileManagers::SidebarEntry::kObject) + "/Drive1";
    EXPECT_FALSE(call(object.c_str(), "org.gtk.Actions", "List"));
}

} // namespace
