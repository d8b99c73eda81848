#include "FileManagers/CloudProvider/SidebarEntry.h"

#include "FileManagers/CloudProvider/Testing/BusFixture.h"

#include <csignal>

namespace {

using FileManagers::SidebarEntry;

// The program that the session bus starts.
class CloudProviderProgram : public Tests::GLibBusTest {
  protected:
    Tests::Process start(const std::string& name) {
        return {CLOUD_PROVIDER_PROGRAM,
                {},
                folders.root() / (name + ".out"),
                folders.root() / (name + ".err")};
    }
    // Who has its name; empty when nobody has.
    std::string owner() {
        const Tests::Variant answer(g_dbus_connection_call_sync(
            looking.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "GetNameOwner", g_variant_new("(s)", SidebarEntry::kBusName), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        const char* name = "";
        if (answer) {
            g_variant_get(answer.get(), "(&s)", &name);
        }
        return name;
    }
    // Whether it has, by its name, an account with a name.
    bool hasAccount(const std::string& name) {
        const Tests::Variant answer(g_dbus_connection_call_sync(
            looking.get(), SidebarEntry::kBusName, SidebarEntry::kObject,
            "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", nullptr, nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        const FileManagers::OwnedText text(answer ? g_variant_print(answer.get(), FALSE)
                                                  : g_strdup(""));
        return std::string(text.get()).find("'Name': <'" + name + "'>") != std::string::npos;
    }
};

TEST_F(CloudProviderProgram, ShowsTheDriveForAsLongAsItIsThere) {
    auto program = start("program");
    ASSERT_TRUE(Tests::waitUntil([&] { return !owner().empty(); })) << program.errors();
    EXPECT_FALSE(hasAccount("Fake Drive"));
    extension.emplace(Titles{"file:///mnt/Drive"});
    extension->appear();
    EXPECT_TRUE(Tests::waitUntil([&] { return hasAccount("Fake Drive"); }));
    extension.reset();
    EXPECT_TRUE(Tests::waitUntil([&] { return !hasAccount("Fake Drive"); }));
}

TEST_F(CloudProviderProgram, LeavesItToTheOneThatIsThere) {
    auto first = start("first");
    ASSERT_TRUE(Tests::waitUntil([&] { return !owner().empty(); })) << first.errors();
    const std::string before = owner();
    auto second = start("second");
    EXPECT_EQ(second.waitForExit(), 1);
    EXPECT_NE(second.errors().find("quorvane-cloud-provider: the name "
                                   "com.Quorvane.Quorvane.CloudProvider cannot be had"),
              std::string::npos);
    EXPECT_EQ(owner(), before);
}

TEST_F(CloudProviderProgram, EndsWithTheBus) {
    auto program = start("program");
    ASSERT_TRUE(Tests::waitUntil([&] { return !owner().empty(); })) << program.errors();
    bus.daemon().signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(), 0);
}

TEST_F(CloudProviderProgram, IsFoundByWhatIsInstalledWithIt) {
    const std::string name = SidebarEntry::kBusName;
    const std::string share = SHARE_FOLDER;
    const std::string found = Tests::contentsOf(share + "/cloud-providers/" + name + ".ini");
    EXPECT_NE(found.find("\nBusName=" + name + "\n"), std::string::npos);
    EXPECT_NE(found.find(std::string("\nObjectPath=") + SidebarEntry::kObject + "\n"),
              std::string::npos);
    const std::string started = Tests::contentsOf(share + "/dbus-1/services/" + name + ".service");
    EXPECT_NE(started.find("\nName=" + name + "\n"), std::string::npos);
    EXPECT_NE(started.find(std::string("\nExec=") + CLOUD_PROVIDER_PROGRAM + "\n"),
              std::string::npos);
}

} // namespace
