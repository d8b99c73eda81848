#include "Platform/CrashReporter/linux/Machine.h"

namespace NS::Machine {

namespace {

struct Row {
    const char* name;
    int index;
};

constexpr Row kRows[] = {
    {"rip",     REG_RIP   },
    {"rsp",     REG_RSP   },
    {"rbp",     REG_RBP   },
    {"rax",     REG_RAX   },
    {"rbx",     REG_RBX   },
    {"rcx",     REG_RCX   },
    {"rdx",     REG_RDX   },
    {"rsi",     REG_RSI   },
    {"rdi",     REG_RDI   },
    {"r8",      REG_R8    },
    {"r9",      REG_R9    },
    {"r10",     REG_R10   },
    {"r11",     REG_R11   },
    {"r12",     REG_R12   },
    {"r13",     REG_R13   },
    {"r14",     REG_R14   },
    {"r15",     REG_R15   },
    {"eflags",  REG_EFL   },
    {"error",   REG_ERR   },
    {"trap",    REG_TRAPNO},
    {"address", REG_CR2   },
};

// A sanitiser would take it for a mistake to look at the stack there.
[[gnu::noinline, gnu::no_sanitize_address, gnu::no_sanitize_thread]] std::uintptr_t
wordAt(std::uintptr_t address) noexcept {
    return *reinterpret_cast<const volatile std::uintptr_t*>(address);
}

} // namespace

Registers registers(const ucontext_t& context) noexcept {
    Registers list{};
    std::size_t count = 0;
    for (const Row& row : kRows) {
        list[count++] = {row.name,
                         static_cast<std::uint64_t>(context.uc_mcontext.gregs[row.index])};
    }
    return list;
}

std::optional<Place> place(const ucontext_t& context) noexcept {
    return Place{static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RIP]),
                 static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RSP])};
}

void setPlace(ucontext_t& context, const Place& place) noexcept {
    context.uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(place.instruction);
    context.uc_mcontext.gregs[REG_RSP] = static_cast<greg_t>(place.stack);
}

std::optional<Place> callerOf(const ucontext_t& context) noexcept {
    const auto stack = static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RSP]);
    if (stack % sizeof(std::uintptr_t) != 0) {
        return std::nullopt;
    }
    return Place{wordAt(stack), stack + sizeof(std::uintptr_t)};
}

} // namespace NS::Machine
