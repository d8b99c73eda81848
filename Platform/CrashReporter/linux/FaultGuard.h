#pragma once

#include <csetjmp>
#include <csignal>

// Lets a signal handler try what may fault, such as reading a stack that is damaged.
namespace NS::FaultGuard {

struct State {
    sigjmp_buf place;
    volatile std::sig_atomic_t isActive;
    volatile std::sig_atomic_t signal;
};

inline constinit State state{};

// Runs a piece of work to its end or to its first fault, and gives the fault's signal; zero for
// none. What the work made of objects with destructors is left as it is. May be nested: the
// innermost ends. One thread.
template <class Work>
int run(const Work& work) noexcept {
    const State outer = state;
    int fault = 0;
    if (sigsetjmp(state.place, 0) == 0) {
        state.isActive = 1;
        work();
    } else {
        fault = state.signal;
    }
    state = outer;
    return fault;
}

// For the handler of the fault: ends the work that is being tried; comes back when there is none.
inline void leave(int signal) noexcept {
    if (state.isActive != 0) {
        state.signal = signal;
        siglongjmp(state.place, 1);
    }
}

} // namespace NS::FaultGuard
