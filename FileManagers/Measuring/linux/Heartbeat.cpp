// How long the file manager's loop is kept from its turn, by whomever.

#include "FileManagers/Measuring/linux/PlugInCode.h"
#include "FileManagers/Measuring/linux/TimedCall.h"

#include <cstdlib>
#include <gio/gio.h>

namespace {

using namespace FileManagers::Measuring;

constexpr guint kPeriod = 10;                  // milliseconds
constexpr std::int64_t kWorthTelling = 50'000; // microseconds

gboolean beat(gpointer) {
    static std::int64_t last = g_get_monotonic_time();
    const std::int64_t now = g_get_monotonic_time();
    if (now - last >= kWorthTelling) {
        writeTime(last, now - last, 0, "heartbeat");
    }
    last = now;
    return G_SOURCE_CONTINUE;
}

} // namespace

extern "C" {

int g_application_run(GApplication* application, int count, char** arguments) {
    // What the file manager starts is not measured.
    (void)::unsetenv("LD_PRELOAD");
    (void)g_timeout_add_full(G_PRIORITY_HIGH, kPeriod, &beat, nullptr, nullptr);
    return next<decltype(g_application_run)>(__func__)(application, count, arguments);
}
}
