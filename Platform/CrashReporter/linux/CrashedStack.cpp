#include "Platform/CrashReporter/linux/CrashedStack.h"

#include "Platform/CrashReporter/linux/Machine.h"

#include <algorithm>
#include <dlfcn.h>
#include <unwind.h>

namespace NS {

namespace {

// A walk that begins in the signal handler, where the frames up to the signal are none of ours.
struct Walk {
    CrashedStack* stack;
    std::uintptr_t begin;
    bool begun;
    // The frame where it begins is in the list already.
    bool skipFirst;
};

_Unwind_Reason_Code onFrame(_Unwind_Context* context, void* data) {
    Walk& walk = *static_cast<Walk*>(data);
    int isInstruction = 0;
    const auto address = static_cast<std::uintptr_t>(_Unwind_GetIPInfo(context, &isInstruction));
    if (address == 0 || walk.stack->depth() >= CrashedStack::kDeepest) {
        return _URC_END_OF_STACK;
    }
    if (!walk.begun) {
        walk.begun = address == walk.begin && isInstruction != 0;
        if (!walk.begun || walk.skipFirst) {
            return _URC_NO_REASON;
        }
        isInstruction = 0;
    }
    walk.stack->add({address, isInstruction != 0});
    return _URC_NO_REASON;
}

_Unwind_Reason_Code onFirstFrame(_Unwind_Context* context, void*) {
    int isInstruction = 0;
    (void)_Unwind_GetIPInfo(context, &isInstruction);
    return _URC_NO_REASON;
}

// Asks without a lock, unlike dladdr().
bool isInModule(std::uintptr_t address) noexcept {
    dl_find_object found{};
    return ::_dl_find_object(reinterpret_cast<void*>(address), &found) == 0;
}

// The fault is that the instruction itself could not be fetched, as it cannot from data.
bool isWithoutCode(const siginfo_t& info, std::uintptr_t address) noexcept {
    return info.si_signo == SIGSEGV && info.si_code == SEGV_ACCERR &&
           reinterpret_cast<std::uintptr_t>(info.si_addr) == address;
}

} // namespace

void CrashedStack::prepare() noexcept {
    (void)isInModule(0);
    (void)_Unwind_Backtrace(&onFirstFrame, nullptr);
}

void CrashedStack::readFrom(const siginfo_t& info, ucontext_t& context) noexcept {
    depth_ = 0;
    const std::optional<Machine::Place> place = Machine::place(context);
    Walk walk{this, place ? place->instruction : 0, !place.has_value(), true};
    if (place) {
        add({place->instruction, true});
    }
    if (place && (!isInModule(place->instruction) || isWithoutCode(info, place->instruction))) {
        // A call to where no code is: the caller is the first whose frame can be told.
        const std::optional<Machine::Place> caller = Machine::callerOf(context);
        if (!caller) {
            return;
        }
        walk.begin = caller->instruction;
        walk.skipFirst = false;
        // The unwinder goes by what the kernel has put on the stack.
        Machine::setPlace(context, *caller);
    }
    (void)_Unwind_Backtrace(&onFrame, &walk);
}

void CrashedStack::readFrom(std::span<void* const> returnAddresses) noexcept {
    depth_ = 0;
    for (void* const address : returnAddresses) {
        add({reinterpret_cast<std::uintptr_t>(address), false});
    }
}

void CrashedStack::add(CrashedFrame frame) noexcept {
    if (depth_ < kInner) {
        inner_[depth_] = frame;
    } else {
        outer_[(depth_ - kInner) % kOuter] = frame;
    }
    ++depth_;
}

std::span<const CrashedFrame> CrashedStack::inner() const noexcept {
    return {inner_.data(), std::min(depth_, kInner)};
}

std::size_t CrashedStack::outerCount() const noexcept {
    return std::min(depth_ - inner().size(), kOuter);
}

std::size_t CrashedStack::leftOut() const noexcept {
    return depth_ - inner().size() - outerCount();
}

const CrashedFrame& CrashedStack::outer(std::size_t index) const noexcept {
    return outer_[(leftOut() + index) % kOuter];
}

} // namespace NS
