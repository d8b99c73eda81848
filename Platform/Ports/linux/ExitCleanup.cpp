#include "Platform/Ports/linux/ExitCleanup.h"

#include "Platform/Foundation/linux/SignalDelivery.h"
#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/Termination.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <sys/types.h>
#include <unistd.h>

namespace NS {

namespace {

// In fixed storage, since a signal handler reads it.
struct Slot {
    std::atomic<bool> taken{false};
    // The process whose name it is, once the rest is filled in: a child of a fork has the table but
    // not the names.
    std::atomic<pid_t> owner{0};
    int folder = -1;
    int file = -1;
    std::array<char, PortLimits::kName + 1> name{};
    std::array<char, 33> socketName{};
};
static_assert(std::atomic<pid_t>::is_always_lock_free, "a signal handler reads it");

std::array<Slot, ExitCleanup::kSlots> slots;

template <std::size_t size>
void put(std::array<char, size>& place, const std::string& text) noexcept {
    place[text.copy(place.data(), size - 1)] = '\0';
}

// Uses nothing but what a signal handler may use.
void removeAll() noexcept {
    const pid_t process = ::getpid();
    for (const Slot& slot : slots) {
        if (slot.owner.load(std::memory_order_acquire) == process) {
            (void)::unlinkat(slot.folder, slot.socketName.data(), 0);
            if (isNamed(slot.folder, slot.name.data(), slot.file)) {
                (void)::unlinkat(slot.folder, slot.name.data(), 0);
            }
        }
    }
}

void removeAllAtExit() {
    removeAll();
}

constexpr std::array<int, 4> kSignals = {SIGINT, SIGTERM, SIGHUP, SIGABRT};

// What each of the signals did before.
std::array<struct sigaction, kSignals.size()> earlier;

// The signal comes again as it came, and so another handler hears who sent it.
void onSignal(int number, siginfo_t* info, void*) {
    removeAll();
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        if (kSignals[i] == number) {
            (void)::sigaction(number, &earlier[i], nullptr);
        }
    }
    sendSignalAgain(number, info);
}

} // namespace

std::size_t ExitCleanup::add(const NameFile& file, const std::string& socketName) {
    static const bool registered = std::atexit(&removeAllAtExit) == 0;
    (void)registered; // without it the names stay until somebody tidies up
    for (std::size_t i = 0; i < slots.size(); ++i) {
        Slot& slot = slots[i];
        if (!slot.taken.exchange(true)) {
            slot.folder = file.folder().descriptor();
            slot.file = file.descriptor();
            put(slot.name, file.name());
            put(slot.socketName, socketName);
            slot.owner.store(::getpid(), std::memory_order_release);
            return i;
        }
    }
    return slots.size();
}

void ExitCleanup::remove(std::size_t slot) noexcept {
    if (slot < slots.size()) {
        slots[slot].owner.store(0);
        slots[slot].taken.store(false);
    }
}

void removeNamesOnTermination() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        // What was ignored from the start, as under nohup, stays ignored.
        if (::sigaction(kSignals[i], nullptr, &earlier[i]) == 0 &&
            earlier[i].sa_handler != SIG_IGN) {
            struct sigaction action {};
            action.sa_sigaction = &onSignal;
            action.sa_flags = SA_SIGINFO | SA_ONSTACK;
            (void)::sigaction(kSignals[i], &action, nullptr); // then it ends the process as before
        }
    }
}

} // namespace NS
