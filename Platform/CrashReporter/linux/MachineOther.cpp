#include "Platform/CrashReporter/linux/Machine.h"

namespace NS::Machine {

Registers registers(const ucontext_t&) noexcept {
    return {};
}

std::optional<std::uintptr_t> instruction(const ucontext_t&) noexcept {
    return std::nullopt;
}

std::optional<std::uintptr_t> returnToCaller(ucontext_t&) noexcept {
    return std::nullopt;
}

} // namespace NS::Machine
