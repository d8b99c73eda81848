#include "Platform/Foundation/linux/SignalDelivery.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace NS {

void sendSignalAgain(int number, siginfo_t* info) noexcept {
    sigset_t one;
    (void)::sigemptyset(&one);
    (void)::sigaddset(&one, number);
    (void)::pthread_sigmask(SIG_BLOCK, &one, nullptr);
    if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), ::gettid(), number, info) != 0) {
        (void)::syscall(SYS_tgkill, ::getpid(), ::gettid(), number);
    }
}

} // namespace NS
