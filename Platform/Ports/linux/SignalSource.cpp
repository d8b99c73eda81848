#include "Platform/Ports/SignalSource.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/linux/FileDescriptor.h"

#include <csignal>
#include <sys/signalfd.h>

namespace NS {

constinit const Class SignalSource::kClass{.name = "NSSignalSource",
                                           .superclass = &RunLoopSource::kClass};

class SignalSource::System {
  public:
    explicit System(const sigset_t& signals)
        : descriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK)) {}

    FileDescriptor descriptor;
};

SignalSource::SignalSource(std::initializer_list<int> signals, std::function<void(int)> received)
    : received_(std::move(received)) {
    sigset_t set;
    (void)::sigemptyset(&set);
    for (const int number : signals) {
        (void)::sigaddset(&set, number);
    }
    (void)::pthread_sigmask(SIG_BLOCK, &set, nullptr);
    system_ = std::make_unique<System>(set);
    if (!system_->descriptor) {
        Exception::raise(kGenericException, "the system gives no descriptor for signals");
    }
}

SignalSource::~SignalSource() = default;

int SignalSource::descriptor() const noexcept {
    return system_->descriptor.get();
}

void SignalSource::ready() {
    signalfd_siginfo info{};
    if (::read(descriptor(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        received_(static_cast<int>(info.ssi_signo));
    }
}

} // namespace NS
