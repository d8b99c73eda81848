// The drive in the sidebars of GNOME. The session bus starts this program when the first sidebar
// looks for it; it runs until the bus goes.

#include "FileManagers/CloudProvider/SidebarEntry.h"
#include "FileManagers/GLib/DriveLoop.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <optional>

namespace {

using FileManagers::SidebarEntry;

struct Program {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    FileManagers::Drive drive;
    FileManagers::DriveLoop driveLoop{drive};
    std::optional<SidebarEntry> entry;
    bool hasName = false;
};

// Before the name is there: who finds that finds all of it.
void busAcquired(GDBusConnection* bus, const char*, gpointer data) {
    auto* const program = static_cast<Program*>(data);
    g_dbus_connection_set_exit_on_close(bus, FALSE); // it is told as the name's loss
    program->entry.emplace(program->drive, bus);
}

void nameAcquired(GDBusConnection*, const char*, gpointer data) {
    static_cast<Program*>(data)->hasName = true;
}

// Another process has it, or there is no bus.
void nameLost(GDBusConnection*, const char*, gpointer data) {
    g_main_loop_quit(static_cast<Program*>(data)->loop);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App options(
        "Shows the Quorvane drive in the sidebars of GNOME's file manager and dialogs.\n"
        "Started by the session bus; runs until that ends.");
    options.set_version_flag("--version", "quorvane-cloud-provider " QUORVANE_VERSION);
    CLI11_PARSE(options, argc, argv);

    Program program;
    const unsigned name =
        g_bus_own_name(G_BUS_TYPE_SESSION, SidebarEntry::kBusName, G_BUS_NAME_OWNER_FLAGS_NONE,
                       &busAcquired, &nameAcquired, &nameLost, &program, nullptr);
    g_main_loop_run(program.loop);
    if (!program.hasName) {
        (void)std::fprintf(stderr,
                           "quorvane-cloud-provider: the name %s cannot be had on the "
                           "session bus\n",
                           SidebarEntry::kBusName);
    }
    program.entry.reset();
    g_bus_unown_name(name);
    g_main_loop_unref(program.loop);
    return program.hasName ? 0 : 1;
}
