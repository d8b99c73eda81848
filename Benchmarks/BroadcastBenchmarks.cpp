// What does it cost to tell all extensions something, and does each further one cost the same? Only
// the sending counts; the receivers look when it is over.

#include "Benchmarks/Support/LinkPeers.h"
#include "Benchmarks/Support/ProcessorTime.h"
#include "Benchmarks/Support/ScratchFolder.h"
#include "Benchmarks/Support/SmallMessage.h"
#include "Benchmarks/linux/RawBroadcast.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/QVExtensionActions.h"
#include "QVFinderExtension/QVExtensionCommsServer.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

using namespace Benchmarks;

class Server {
  public:
    Server() {
        server_->setTarget_selector_for(server_, {"extensionAlive:"},
                                        NS::str(QVExtensionAction::kAlive));
    }
    ~Server() {
        NS::RunLoop::currentRunLoop()->removePort_forMode(NS::Ref<NS::MachPort>(*server_->port()),
                                                          NS::RunLoopMode::kDefault);
        server_->setActions(nullptr); // its handler keeps it
    }

    void awaitClients(std::size_t count) {
        const auto farAway = NS::Date::dateWithTimeIntervalSinceNow(60);
        while (server_->ports()->count() < count) {
            if (!NS::RunLoop::currentRunLoop()->runMode_beforeDate(NS::RunLoopMode::kDefault,
                                                                   *farAway)) {
                throw std::runtime_error("not all clients announced themselves");
            }
        }
    }
    void broadcast() {
        server_->broadcastAction_data(NS::str(QVExtensionAction::kUserInfo), payload_);
    }

  private:
    NS::Ref<QVExtensionCommsServer> server_ =
        NS::make<QVExtensionCommsServer>(NS::str(kServerPortName));
    NS::Ref<NS::Array> payload_ = NS::Array::arrayWithObjects({smallMessage()->objectAtIndex(1)});
};

template <class Sender>
void broadcast(benchmark::State& state, const TransportKind& clients) {
    const ScratchFolder folder;
    const auto count = static_cast<std::size_t>(state.range(0));
    Sender sender{};
    LinkPeers peers(clients, folder.path(), count);
    sender.awaitClients(count);
    ProcessorTime time;
    while (state.KeepRunningBatch(kBroadcastsAtOnce)) {
        (void)time.lap();
        for (int i = 0; i < kBroadcastsAtOnce; ++i) {
            sender.broadcast();
        }
        state.SetIterationTime(time.lap());
        peers.peer().order();
    }
}

void ofEachSize(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->UseManualTime();
}

void registerCases() {
    ofEachSize(benchmark::RegisterBenchmark("broadcast/ours", &broadcast<Server>, kPortClients));
    ofEachSize(benchmark::RegisterBenchmark("broadcast/floor", &broadcast<RawSender>, kRawClients));
}

} // namespace

int main(int argc, char** argv) {
    Benchmarks::allowManyDescriptors();
    return runBenchmarks(argc, argv, &registerCases);
}
