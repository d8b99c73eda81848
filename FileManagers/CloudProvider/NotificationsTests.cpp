#include "FileManagers/CloudProvider/Notifications.h"

#include "FileManagers/CloudProvider/Testing/BusFixture.h"
#include "FileManagers/CloudProvider/Testing/FakeDesktop.h"

namespace {

// The program that looks is the desktop.
class Notifications : public Tests::GLibBusTest {
  protected:
    std::optional<Tests::FakeDesktop> desktop{std::in_place, looking.get()};
    std::optional<FileManagers::Notifications> notifications{std::in_place, served.get()};
};

TEST_F(Notifications, TellWhatWasNotDoneAndWhy) {
    notifications->show({"“A & B” could not be carried out", "Nothing <was> done & well."});
    EXPECT_TRUE(runUntil([&] { return desktop->shown.size() == 1; }));
    EXPECT_EQ(desktop->shown,
              Titles{"Fennmoor Cloud 0 MainOnline: “A & B” could not be carried out: "
                     "Nothing &lt;was&gt; done &amp; well."});
}

TEST_F(Notifications, ReplaceTheOneBefore) {
    for (const std::size_t count : {1U, 2U}) {
        notifications->show({"a", "b"});
        ASSERT_TRUE(runUntil([&] { return desktop->shown.size() == count; }));
        (void)call("/", "org.freedesktop.DBus.Peer", "Ping"); // the answer comes before its own
    }
    EXPECT_EQ(desktop->shown[1], "Fennmoor Cloud 1 MainOnline: a: b");
}

TEST_F(Notifications, EndWithTheirObject) {
    notifications->show({"a", "b"});
    notifications.reset();
    EXPECT_TRUE(runUntil([&] { return desktop->shown.size() == 1; }));
    (void)call("/", "org.freedesktop.DBus.Peer", "Ping");
}

} // namespace
