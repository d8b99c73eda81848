#pragma once

#include "FileManagers/GLib/Owned.h"
#include "FileManagers/Shared/NotDone.h"

#include <gio/gio.h>

namespace FileManagers {

// Tells the user, over the desktop's notifications, what was not done. One that is still shown is
// replaced. Never waits; without a desktop that shows them nothing is told.
class Notifications {
  public:
    // The bus outlives it.
    explicit Notifications(GDBusConnection* bus) : bus_(bus) {}
    ~Notifications();
    Notifications(const Notifications&) = delete;
    Notifications& operator=(const Notifications&) = delete;

    void show(const NotDone& notDone);

  private:
    static void shown(GObject* bus, GAsyncResult* result, gpointer self);

    GDBusConnection* bus_;
    OwnedObject<GCancellable> end_{g_cancellable_new()};
    unsigned last_ = 0; // the desktop's number for it
};

} // namespace FileManagers
