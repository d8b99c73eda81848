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

// Where a thread is.
struct Place {
    // The address of the instruction to be run.
    std::uintptr_t instruction;
    std::uintptr_t stack;
};

// Nothing on a kind that has no file.
std::optional<Place> place(const ucontext_t& context) noexcept;
// Gives a context, which goes on there, another place. Does nothing on a kind that has no file.
void setPlace(ucontext_t& context, const Place& place) noexcept;

// The caller's place, right after its call, for a called address that holds no code. Reads the
// stack, which may fault. Nothing where there is no way to tell.
std::optional<Place> callerOf(const ucontext_t& context) noexcept;

} // namespace NS::Machine
