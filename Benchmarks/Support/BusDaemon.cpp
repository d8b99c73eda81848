#include "Benchmarks/Support/BusDaemon.h"

namespace Benchmarks {

namespace {

// It tells its address where another side says that it is ready. It complains where it may not open
// as many files as it likes.
constexpr const char* kCommand =
    "exec " DBUS_DAEMON " --session --nofork --nopidfile --nosyslog --print-address=3 "
    "--address=unix:path=\"$1/bus\" 2>/dev/null";

} // namespace

BusDaemon::BusDaemon(const std::filesystem::path& folder)
    : daemon_("/bin/sh", {"-c", kCommand, "sh", folder}) {}

} // namespace Benchmarks
