#include "FileManagers/GLib/Picks.h"

#include <utility>

namespace FileManagers {

namespace {

struct Pick {
    Drive& drive;
    Shell::MenuKind kind;
    Shell::MenuEntry entry;
    SharedPlace place;
};

void activated(gpointer, gpointer data) {
    // The item may go while it is carried out, and this with it.
    const Pick pick = *static_cast<const Pick*>(data);
    pick.drive.pick(pick.kind, pick.entry, *pick.place);
}

void forget(gpointer data, GClosure*) {
    delete static_cast<Pick*>(data);
}

} // namespace

void pickOnActivate(gpointer item, Drive& drive, Shell::MenuKind kind,
                    const Shell::MenuEntry& entry, SharedPlace place) {
    g_signal_connect_data(item, "activate", G_CALLBACK(&activated),
                          new Pick{drive, kind, entry, std::move(place)}, &forget, GConnectFlags{});
}

} // namespace FileManagers
