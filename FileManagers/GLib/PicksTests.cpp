#include "FileManagers/GLib/Picks.h"

#include "FileManagers/GLib/Owned.h"
#include "FileManagers/Shared/Testing/DriveFixture.h"

#include <gio/gio.h>

namespace {

// An item of a menu: any object with the signal.
class Picks : public Tests::DriveTest {
  protected:
    Picks() : item(g_application_new(nullptr, GApplicationFlags{})) {}

    FileManagers::OwnedObject<GApplication> item;
};

TEST_F(Picks, CarryOutTheirEntryOnTheirPlace) {
    start();
    const auto place =
        std::make_shared<const Shell::Place>(Shell::Place{{"/mnt/Drive/a"}, "/mnt/Drive"});
    FileManagers::pickOnActivate(item.get(), *drive, Shell::MenuKind::kItems,
                                 {"Do It", "doIt:", true}, place);
    EXPECT_EQ(asked(), Titles{});
    g_signal_emit_by_name(item.get(), "activate");
    EXPECT_EQ(asked(), Titles{"RunOnPaths 0 doIt: [/mnt/Drive/a] /mnt/Drive later"});
    EXPECT_EQ(place.use_count(), 2);
    item.reset();
    EXPECT_EQ(place.use_count(), 1);
}

} // namespace
