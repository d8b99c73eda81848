// How soon does the extension announce itself, and what does it keep of the memory once it rests?
// Beside it a program that links the same libraries and does nothing but connect.

#include "Benchmarks/Support/BusDaemon.h"
#include "Benchmarks/Support/LinkPeers.h"
#include "Benchmarks/Support/Peer.h"
#include "Benchmarks/Support/ProcessorTime.h"
#include "Benchmarks/Support/ScratchFolder.h"
#include "Benchmarks/linux/BareHost.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Ports/RunLoop.h"
#include "QVFinderExtension/QVExtensionActions.h"
#include "QVFinderExtension/QVExtensionCommsComponent.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

using namespace Benchmarks;

// Answers an extension that announces itself with where the drive is.
class Answers final : public NS::Object {
    NS_OBJECT(Answers)
  public:
    explicit Answers(QVExtensionCommsComponent& link) : link_(link) {}

    void extensionAlive(NS::RefPtr<NS::MachPort> client) {
        isAnnounced = true;
        const auto path = NS::KeyedArchiver::archivedDataWithRootObject(NS::str("/drive"));
        link_.sendAction_data_to(NS::str(QVExtensionAction::kInit),
                                 NS::Array::arrayWithObjects({path}), client);
    }
    void userInfo() { isReady = true; }

    bool isAnnounced = false;
    bool isReady = false;

  private:
    QVExtensionCommsComponent& link_;
};

constexpr NS::Method kMethods[] = {
    NS::method<&Answers::extensionAlive>("extensionAlive:"),
    NS::method<&Answers::userInfo>("userInfo"),
};

constinit const NS::Class Answers::kClass{
    .name = "BenchmarkAnswers", .superclass = &NS::Object::kClass, .methods = kMethods};

void turn(double seconds) {
    (void)NS::RunLoop::currentRunLoop()->runMode_beforeDate(
        NS::RunLoopMode::kDefault, *NS::Date::dateWithTimeIntervalSinceNow(seconds));
}

class Host {
  public:
    static constexpr const char* kProgram = "quorvane-finder-extension";

    Host() {
        link_->setTarget_selector_for(answers_, {"extensionAlive:"},
                                      NS::str(QVExtensionAction::kAlive));
        link_->setTarget_selector_for(answers_, {"userInfo"},
                                      NS::str(QVExtensionAction::kRequestUserInfo));
    }
    ~Host() {
        NS::RunLoop::currentRunLoop()->removePort_forMode(NS::Ref<NS::MachPort>(*link_->port()),
                                                          NS::RunLoopMode::kDefault);
    }

    void awaitProgram() { turnUntil(answers_->isAnnounced); }
    void awaitRest() { turnUntil(answers_->isReady); }

  private:
    static void turnUntil(const bool& reached) {
        for (int seconds = 0; !reached; ++seconds) {
            if (seconds == 60) {
                throw std::runtime_error("the extension does not come up");
            }
            turn(1);
        }
    }

    NS::Ref<QVExtensionCommsComponent> link_ =
        NS::make<QVExtensionCommsComponent>(NS::str(kServerPortName));
    NS::Ref<Answers> answers_ = NS::make<Answers>(*link_);
};

int startBeside(const char* program) {
    return startProgram(Peer::ownProgram().parent_path() / program, {});
}

// The processor time of the program from its start on; there is nothing that it waits for.
template <class Side>
void start(benchmark::State& state) {
    const ScratchFolder folder;
    for (auto step : state) {
        Side side{};
        const int program = startBeside(Side::kProgram);
        side.awaitProgram();
        state.SetIterationTime(processorTimeOf(program));
        endProgram(program);
    }
}

// Once it has stayed the same for a while.
std::size_t settledBytesOf(int program) {
    constexpr int kStillTurns = 5;
    std::size_t bytes = 0;
    for (int still = 0; still < kStillTurns;) {
        turn(0.1);
        const std::size_t now = residentBytesOf(program);
        still = now == bytes ? still + 1 : 0;
        bytes = now;
    }
    return bytes;
}

template <class Side>
void rest(benchmark::State& state) {
    const ScratchFolder folder;
    const BusDaemon bus(folder.path());
    Side side{};
    for (auto step : state) {
        const int program = startBeside(Side::kProgram);
        side.awaitProgram();
        side.awaitRest();
        state.counters["resident"] = static_cast<double>(settledBytesOf(program));
        endProgram(program);
    }
}

void registerCases() {
    benchmark::RegisterBenchmark("start/ours", &start<Host>)->UseManualTime();
    benchmark::RegisterBenchmark("start/floor", &start<BareHost>)->UseManualTime();
    benchmark::RegisterBenchmark("rest/ours", &rest<Host>)->Iterations(1);
    benchmark::RegisterBenchmark("rest/floor", &rest<BareHost>)->Iterations(1);
}

} // namespace

int main(int argc, char** argv) {
    return runBenchmarks(argc, argv, &registerCases);
}
