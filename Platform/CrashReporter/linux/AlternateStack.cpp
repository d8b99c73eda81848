#include "Platform/CrashReporter/AlternateStack.h"

#include <csignal>
#include <sys/mman.h>
#include <unistd.h>

namespace NS {

namespace {

// Below the stack lies a page that nobody may touch: what overflows it ends the process there.
std::size_t guardBytes() noexcept {
    return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

void* mapStack() noexcept {
    void* const memory = ::mmap(nullptr, guardBytes() + AlternateStack::kBytes, PROT_NONE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    (void)::mprotect(static_cast<char*>(memory) + guardBytes(), AlternateStack::kBytes,
                     PROT_READ | PROT_WRITE); // else sigaltstack() has a stack that faults
    return memory;
}

} // namespace

AlternateStack::AlternateStack() noexcept : memory_(mapStack()) {
    if (memory_ == nullptr) {
        return;
    }
    stack_t stack{};
    stack.ss_sp = static_cast<char*>(memory_) + guardBytes();
    stack.ss_size = kBytes;
    stack_t before{};
    if (::sigaltstack(&stack, &before) == 0 && (before.ss_flags & SS_DISABLE) == 0) {
        earlier_ = before.ss_sp;
        earlierBytes_ = before.ss_size;
    }
}

AlternateStack::~AlternateStack() {
    if (memory_ == nullptr) {
        return;
    }
    stack_t before{};
    before.ss_sp = earlier_;
    before.ss_size = earlierBytes_;
    before.ss_flags = earlier_ == nullptr ? SS_DISABLE : 0;
    (void)::sigaltstack(&before, nullptr); // fails only in a handler on this very stack
    (void)::munmap(memory_, guardBytes() + kBytes);
}

} // namespace NS
