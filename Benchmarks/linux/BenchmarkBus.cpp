#include "Benchmarks/Support/BenchmarkBus.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>

namespace Benchmarks {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 30s;

constexpr const char* kPolicyAndLimits = R"(
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
)";

bool canConnect() {
    sd_bus* bus = nullptr;
    const bool connected = sd_bus_open_user(&bus) >= 0;
    sd_bus_close_unref(bus);
    return connected;
}

} // namespace

BenchmarkBus::BenchmarkBus() {
    const std::string address = "unix:path=" + (folder_.path() / "bus").string();
    const std::filesystem::path configuration = folder_.path() / "bus.conf";
    std::ofstream(configuration) << "<busconfig>" << kPolicyAndLimits << "  <listen>" << address
                                 << "</listen>\n</busconfig>\n";
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    daemon_.emplace(DBUS_DAEMON, std::vector<std::string>{"--config-file=" + configuration.string(),
                                                          "--nofork", "--nopidfile", "--nosyslog"});
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!canConnect()) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("no session bus for the benchmark");
        }
        std::this_thread::sleep_for(1ms);
    }
}

} // namespace Benchmarks
