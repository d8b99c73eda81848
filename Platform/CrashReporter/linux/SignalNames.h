#pragma once

#include <array>
#include <csignal>
#include <string_view>

namespace NS {

// The signals that are a crash.
inline constexpr std::array<int, 7> kCrashSignals = {SIGSEGV, SIGBUS,  SIGILL, SIGFPE,
                                                     SIGABRT, SIGTRAP, SIGSYS};

// "SIGSEGV"; "signal" for one that is no crash. Safe in a signal handler, as the next is.
std::string_view signalName(int signal) noexcept;
// What the system says of a signal's cause, "SEGV_MAPERR" or "SI_USER"; "code" where it has no
// name.
std::string_view signalCodeName(int signal, int code) noexcept;

} // namespace NS
