#include "Tests/Support/SessionBus.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace Tests {

namespace {

// The limits are those of the session bus as it comes with the system, which lets larger messages
// through than a bus does without being told.
constexpr const char* kConfiguration = R"(<busconfig>
  <type>session</type>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_message_size">1000000000</limit>
  <limit name="max_replies_per_connection">50000</limit>
)";

std::filesystem::path writeConfiguration(const std::filesystem::path& folder) {
    auto file = folder / "bus.conf";
    std::ofstream(file) << kConfiguration << "  <listen>" << std::getenv("DBUS_SESSION_BUS_ADDRESS")
                        << "</listen>\n</busconfig>\n";
    return file;
}

} // namespace

SessionBus::SessionBus(const PrivateFolders& folders)
    : daemon_(DBUS_DAEMON,
              {"--config-file=" + writeConfiguration(folders.root()).string(), "--nofork",
               "--nopidfile", "--nosyslog", "--print-address"},
              folders.root() / "bus.out", folders.root() / "bus.err") {
    // It prints its address once it listens.
    (void)waitUntil([this] { return daemon_.output().ends_with('\n') || !daemon_.isRunning(); });
    if (!daemon_.isRunning()) {
        throw std::runtime_error("no session bus for the test: " + daemon_.errors());
    }
}

} // namespace Tests
