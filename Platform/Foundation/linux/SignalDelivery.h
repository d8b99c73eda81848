#pragma once

#include <csignal>

namespace NS {

// For a signal's handler: sends the signal again to this thread, with all that the kernel said of
// it. It arrives where it broke in, once the handler returns, and finds what is set for it by then.
// Safe in a signal handler.
void sendSignalAgain(int number, siginfo_t* info) noexcept;

} // namespace NS
