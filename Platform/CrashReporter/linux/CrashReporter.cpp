#include "Platform/CrashReporter/CrashReporter.h"

#include "Platform/CrashReporter/AlternateStack.h"
#include "Platform/CrashReporter/linux/CrashReport.h"
#include "Platform/CrashReporter/linux/FaultGuard.h"
#include "Platform/CrashReporter/linux/ReportRetirement.h"
#include "Platform/CrashReporter/linux/SignalNames.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/SearchPaths.h"
#include "Platform/Foundation/linux/SignalDelivery.h"

#include <atomic>
#include <cerrno>
#include <new>
#include <poll.h>
#include <unistd.h>

namespace NS {

namespace {

constinit CrashReport report;

// What each of the signals did before.
std::array<struct sigaction, kCrashSignals.size()> earlier;

// The process and the thread that write the report; a child of a fork has none of its parent's.
std::atomic<std::uint64_t> reporter{0};
std::atomic<bool> isWritten{false};
std::atomic<bool> isStarted{false};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "a signal handler uses it");

// Between two looks of a thread that waits for the report of another.
constexpr int kMillisecondsToWait = 10;

void onCrash(int number, siginfo_t* info, void* context);

bool isOurs(const struct sigaction& action) noexcept {
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == &onCrash;
}

// Who came later keeps its place, and comes back to what was there before.
void restoreEarlier() noexcept {
    for (std::size_t i = 0; i < kCrashSignals.size(); ++i) {
        struct sigaction current {};
        if (::sigaction(kCrashSignals[i], nullptr, &current) == 0 && isOurs(current)) {
            (void)::sigaction(kCrashSignals[i], &earlier[i], nullptr); // it was valid once
        }
    }
}

std::uint64_t thisThread() noexcept {
    return static_cast<std::uint64_t>(::getpid()) << 32U | static_cast<std::uint32_t>(::gettid());
}

bool isOfThisProcess(std::uint64_t thread) noexcept {
    return thread >> 32U == static_cast<std::uint64_t>(::getpid());
}

// The thread that writes, which is this one when it was the first.
std::uint64_t takeTurn(std::uint64_t self) noexcept {
    std::uint64_t current = 0;
    while (!isOfThisProcess(current)) {
        if (reporter.compare_exchange_weak(current, self)) {
            isWritten = false;
            return 0;
        }
    }
    return current;
}

// A signal while the report is being written, on the thread that writes it.
void onFault(int number, const siginfo_t& info) noexcept {
    // Sent from outside it says nothing about the report. The C library ends itself by SIGABRT.
    const bool isOwnAbort =
        number == SIGABRT && info.si_code == SI_TKILL && info.si_pid == ::getpid();
    if (info.si_code > 0 || isOwnAbort) {
        FaultGuard::leave(number);
        restoreEarlier(); // the fault comes again and ends the process
    }
}

void waitForTheReport() noexcept {
    while (!isWritten) {
        (void)::poll(nullptr, 0, kMillisecondsToWait);
    }
}

void onCrash(int number, siginfo_t* info, void* context) {
    const int error = errno;
    const std::uint64_t self = thisThread();
    const std::uint64_t writer = takeTurn(self);
    if (writer == self && !isWritten) {
        onFault(number, *info);
        errno = error;
        return;
    }
    if (writer == 0) {
        report.write({number, info, static_cast<ucontext_t*>(context)});
        isWritten = true;
    } else {
        waitForTheReport();
    }
    restoreEarlier();
    // To another handler or to the end of the process with a core dump of the place.
    sendSignalAgain(number, info);
    errno = error;
}

void install() noexcept {
    struct sigaction action {};
    action.sa_sigaction = &onCrash;
    // A fault in the handler has to reach it; all else has to wait. So does SIGABRT, which is
    // mostly sent: abort() lets it through.
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    (void)::sigfillset(&action.sa_mask);
    for (const int number : kCrashSignals) {
        if (number != SIGABRT) {
            (void)::sigdelset(&action.sa_mask, number);
        }
    }
    for (std::size_t i = 0; i < kCrashSignals.size(); ++i) {
        if (::sigaction(kCrashSignals[i], nullptr, &earlier[i]) == 0 &&
            earlier[i].sa_handler != SIG_IGN) {
            (void)::sigaction(kCrashSignals[i], &action, nullptr); // then it ends the process
        }
    }
}

std::string reportsFolder() {
    return searchPathForDirectoryInDomain(SearchPathDirectory::kLibrary, SearchPathDomain::kUser)
        ->stringByAppendingPathComponent(*str("Logs/DiagnosticReports"))
        ->fileSystemRepresentation();
}

} // namespace

void startCrashReporter(std::string_view process, std::string_view version) {
    if (isStarted.exchange(true)) {
        return; // what was there before would be the reporter itself, and no crash an end
    }
    const std::string folder = reportsFolder();
    (void)FileManager::defaultManager().createDirectoryAtPath(
        *String::fromFileSystemRepresentation(folder)); // shows when it is opened
    (void)report.prepare(folder, process, version);     // the retirement says why
    // Never taken down: the end of the process can fail as well.
    alignas(AlternateStack) static std::array<std::byte, sizeof(AlternateStack)> place;
    ::new (place.data()) AlternateStack;
    handleUncaughtExceptions();
    install();
    const std::string failure = retireReports(folder, std::string(process));
    if (!failure.empty()) {
        Log("crash reports: %s", failure.c_str());
    }
}

} // namespace NS
