#include "Platform/CrashReporter/linux/Machine.h"

namespace NS::Machine {

Registers registers(const ucontext_t&) noexcept {
    return {};
}

std::optional<Place> place(const ucontext_t&) noexcept {
    return std::nullopt;
}

void setPlace(ucontext_t&, const Place&) noexcept {}

std::optional<Place> callerOf(const ucontext_t&) noexcept {
    return std::nullopt;
}

} // namespace NS::Machine
