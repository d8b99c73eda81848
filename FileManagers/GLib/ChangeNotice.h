#pragma once

#include <cstdint>
#include <functional>

#include <glib.h>

namespace FileManagers {

// Tells a file manager that the entries it shows may be old. It builds its menus anew then, which
// with thousands of selected files takes some of them a second, mostly for entries of their own. So
// it is told at once, and then left alone for a few times as long as that took it; changes
// meanwhile are told together.
//
// Belongs to the thread of GLib's default main loop.
class ChangeNotice {
  public:
    using Clock = std::function<std::int64_t()>; // in microseconds

    // What has the menus built. It is called by note() and by the loop.
    explicit ChangeNotice(std::function<void()> tell, Clock clock = &g_get_monotonic_time);
    ~ChangeNotice();
    ChangeNotice(const ChangeNotice&) = delete;
    ChangeNotice& operator=(const ChangeNotice&) = delete;

    // Something has changed.
    void note();

  private:
    static gboolean tellLater(gpointer self);
    void tell();

    const std::function<void()> tell_;
    const Clock clock_;
    std::int64_t restsUntil_ = 0;
    unsigned source_ = 0; // of what is to be told later
};

} // namespace FileManagers
