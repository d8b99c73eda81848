#include "Platform/CrashReporter/linux/Machine.h"

namespace NS::Machine {

namespace {

constexpr std::array<const char*, 31> kNames = {
    "x0",  "x1",  "x2",  "x3",  "x4",  "x5",  "x6",  "x7",  "x8",  "x9",  "x10",
    "x11", "x12", "x13", "x14", "x15", "x16", "x17", "x18", "x19", "x20", "x21",
    "x22", "x23", "x24", "x25", "x26", "x27", "x28", "fp",  "lr",
};
// Where a call leaves the address to return to.
constexpr std::size_t kLink = 30;

} // namespace

Registers registers(const ucontext_t& context) noexcept {
    Registers list{};
    std::size_t count = 0;
    list[count++] = {"pc", context.uc_mcontext.pc};
    list[count++] = {"sp", context.uc_mcontext.sp};
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        list[count++] = {kNames[i], context.uc_mcontext.regs[i]};
    }
    list[count++] = {"pstate", context.uc_mcontext.pstate};
    list[count++] = {"address", context.uc_mcontext.fault_address};
    return list;
}

std::optional<Place> place(const ucontext_t& context) noexcept {
    return Place{context.uc_mcontext.pc, context.uc_mcontext.sp};
}

void setPlace(ucontext_t& context, const Place& place) noexcept {
    context.uc_mcontext.pc = place.instruction;
    context.uc_mcontext.sp = place.stack;
}

std::optional<Place> callerOf(const ucontext_t& context) noexcept {
    return Place{context.uc_mcontext.regs[kLink], context.uc_mcontext.sp};
}

} // namespace NS::Machine
