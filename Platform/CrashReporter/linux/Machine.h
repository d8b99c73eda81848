#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ucontext.h>

// What a kind of processor calls its registers, where a signal broke in. Each has a file of its
// own. Safe in a signal handler.
namespace NS::Machine {

struct Register {
    const char* name;
    std::uint64_t value;
};

// A list that ends with the first null name.
using Registers = std::array<Register, 40>;

// Empty on a kind of processor that has no file.
Registers registers(const ucontext_t& context) noexcept;

// The address of the instruction that was to be run; nothing on a kind that has no file.
std::optional<std::uintptr_t> instruction(const ucontext_t& context) noexcept;

// Makes the context that of the caller, right after its call, for a called address that holds no
// code. Reads the stack, which may fault. The result is the caller's instruction, nothing where
// there is no way to tell.
std::optional<std::uintptr_t> returnToCaller(ucontext_t& context) noexcept;

} // namespace NS::Machine
