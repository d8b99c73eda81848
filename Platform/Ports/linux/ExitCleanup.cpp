#include "Platform/Ports/linux/ExitCleanup.h"

#include "Platform/Ports/PortLimits.h"
#include "Platform/Ports/Termination.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace NS {

namespace {

enum class SlotState : int { kFree, kTaken, kInUse };

// Fixed storage, since a signal handler reads it.
struct Slot {
    std::atomic<SlotState> state{SlotState::kFree};
    int folder = -1;
    std::array<char, PortLimits::kName + 1> name{};
    std::array<char, 33> socketName{};
};

std::array<Slot, 64> slots;
// A child of a fork has the table but not the names.
std::atomic<pid_t> owner{0};

static_assert(std::atomic<SlotState>::is_always_lock_free, "a signal handler reads it");

// Uses nothing but what a signal handler may use.
void removeAll() noexcept {
    if (owner.load() != ::getpid()) {
        return;
    }
    for (Slot& slot : slots) {
        if (slot.state.load() == SlotState::kInUse) {
            (void)::unlinkat(slot.folder, slot.socketName.data(), 0);
            (void)::unlinkat(slot.folder, slot.name.data(), 0);
        }
    }
}

void removeAllAtExit() {
    removeAll();
}

void onSignal(int number) {
    removeAll();
    // The handler was reset when it was called: the signal now ends the process as if it had never
    // been handled.
    (void)::raise(number);
}

} // namespace

std::size_t ExitCleanup::add(int folder, const char* name, const char* socketName) {
    static const bool registered = std::atexit(&removeAllAtExit) == 0;
    (void)registered; // without it the names stay until somebody tidies up
    owner.store(::getpid());
    for (std::size_t i = 0; i < slots.size(); ++i) {
        Slot& slot = slots[i];
        SlotState expected = SlotState::kFree;
        if (slot.state.compare_exchange_strong(expected, SlotState::kTaken)) {
            slot.folder = folder;
            std::strncpy(slot.name.data(), name, slot.name.size() - 1);
            std::strncpy(slot.socketName.data(), socketName, slot.socketName.size() - 1);
            slot.state.store(SlotState::kInUse);
            return i;
        }
    }
    return slots.size();
}

void ExitCleanup::remove(std::size_t slot) noexcept {
    if (slot < slots.size()) {
        slots[slot].name.fill('\0');
        slots[slot].socketName.fill('\0');
        slots[slot].state.store(SlotState::kFree);
    }
}

void removeNamesOnTermination() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        (void)::sigaction(number, nullptr, &action);
        // What was ignored from the start, as under nohup, stays ignored.
        if (action.sa_handler != SIG_IGN) {
            action.sa_handler = &onSignal;
            action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
            (void)::sigaction(number, &action, nullptr);
        }
    }
}

} // namespace NS
