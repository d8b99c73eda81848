#include "Benchmarks/Support/LinkPeers.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace Benchmarks {

namespace {

const TransportKind* const kKinds[] = {&kRaw, &kPort, &kLink, &kBus, &kZeroMQ};

// It tells its address where another side says that it is ready. It complains where it may not open
// as many files as it likes.
void startDaemon(std::optional<Peer>& daemon, const std::filesystem::path& folder) {
    const std::string command =
        "exec " DBUS_DAEMON " --session --nofork --nopidfile --nosyslog --print-address=3 "
        "--address=unix:path=\"$1/bus\" 2>/dev/null";
    daemon.emplace("/bin/sh", std::vector<std::string>{"-c", command, "sh", folder});
}

} // namespace

LinkPeers::LinkPeers(const TransportKind& kind, const std::filesystem::path& folder,
                     std::size_t batch) {
    if (&kind == &kBus) {
        startDaemon(daemon_, folder);
    }
    peer_.emplace(Peer::ownProgram(),
                  std::vector<std::string>{kPeerOption, kind.name, folder, std::to_string(batch)});
}

std::vector<int> LinkPeers::processes() const {
    std::vector<int> found{peer_->process()};
    if (daemon_) {
        found.push_back(daemon_->process());
    }
    return found;
}

std::optional<int> servedBy(int argc, char** argv) {
    if (argc != 5 || std::string_view(argv[1]) != kPeerOption) {
        return std::nullopt;
    }
    const auto* const found = std::ranges::find_if(
        kKinds, [&](const TransportKind* kind) { return std::string_view(argv[2]) == kind->name; });
    if (found == std::end(kKinds)) {
        return 2;
    }
    (*found)->serve(argv[3], std::stoul(argv[4]));
    return 0;
}

} // namespace Benchmarks
