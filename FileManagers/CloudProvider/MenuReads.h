#pragma once

#include <functional>
#include <memory>

#include <gio/gio.h>

namespace FileManagers {

// Tells when a program begins to read a menu that this process has on a bus: a user is opening it.
//
// The library that serves menus has no place for that, so that the calls are watched as they come
// in, before they are answered. What comes meanwhile is told once.
class MenuReads {
  public:
    // Calls back from the default main loop, on whose thread this object lives, as long as it does.
    MenuReads(GDBusConnection* bus, std::function<void()> onRead);
    ~MenuReads();
    MenuReads(const MenuReads&) = delete;
    MenuReads& operator=(const MenuReads&) = delete;

  private:
    struct Watch;

    GDBusConnection* bus_;
    std::shared_ptr<Watch> watch_;
    unsigned filter_;
};

} // namespace FileManagers
