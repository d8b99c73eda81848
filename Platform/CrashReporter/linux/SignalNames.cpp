#include "Platform/CrashReporter/linux/SignalNames.h"

namespace NS {

namespace {

struct SignalRow {
    int signal;
    std::string_view name;
};

constexpr SignalRow kSignalRows[] = {
    {SIGSEGV, "SIGSEGV"},
    {SIGBUS,  "SIGBUS" },
    {SIGILL,  "SIGILL" },
    {SIGFPE,  "SIGFPE" },
    {SIGABRT, "SIGABRT"},
    {SIGTRAP, "SIGTRAP"},
    {SIGSYS,  "SIGSYS" },
};

// The codes that each signal has of its own.
constexpr int kAnySignal = 0;

struct CodeRow {
    int signal;
    int code;
    std::string_view name;
};

constexpr CodeRow kCodeRows[] = {
    {kAnySignal, SI_USER,       "SI_USER"      },
    {kAnySignal, SI_KERNEL,     "SI_KERNEL"    },
    {kAnySignal, SI_QUEUE,      "SI_QUEUE"     },
    {kAnySignal, SI_TIMER,      "SI_TIMER"     },
    {kAnySignal, SI_TKILL,      "SI_TKILL"     },
    {SIGSEGV,    SEGV_MAPERR,   "SEGV_MAPERR"  },
    {SIGSEGV,    SEGV_ACCERR,   "SEGV_ACCERR"  },
    {SIGSEGV,    SEGV_BNDERR,   "SEGV_BNDERR"  },
    {SIGSEGV,    SEGV_PKUERR,   "SEGV_PKUERR"  },
    {SIGBUS,     BUS_ADRALN,    "BUS_ADRALN"   },
    {SIGBUS,     BUS_ADRERR,    "BUS_ADRERR"   },
    {SIGBUS,     BUS_OBJERR,    "BUS_OBJERR"   },
    {SIGBUS,     BUS_MCEERR_AR, "BUS_MCEERR_AR"},
    {SIGBUS,     BUS_MCEERR_AO, "BUS_MCEERR_AO"},
    {SIGILL,     ILL_ILLOPC,    "ILL_ILLOPC"   },
    {SIGILL,     ILL_ILLOPN,    "ILL_ILLOPN"   },
    {SIGILL,     ILL_ILLADR,    "ILL_ILLADR"   },
    {SIGILL,     ILL_ILLTRP,    "ILL_ILLTRP"   },
    {SIGILL,     ILL_PRVOPC,    "ILL_PRVOPC"   },
    {SIGILL,     ILL_PRVREG,    "ILL_PRVREG"   },
    {SIGILL,     ILL_COPROC,    "ILL_COPROC"   },
    {SIGILL,     ILL_BADSTK,    "ILL_BADSTK"   },
    {SIGFPE,     FPE_INTDIV,    "FPE_INTDIV"   },
    {SIGFPE,     FPE_INTOVF,    "FPE_INTOVF"   },
    {SIGFPE,     FPE_FLTDIV,    "FPE_FLTDIV"   },
    {SIGFPE,     FPE_FLTOVF,    "FPE_FLTOVF"   },
    {SIGFPE,     FPE_FLTUND,    "FPE_FLTUND"   },
    {SIGFPE,     FPE_FLTRES,    "FPE_FLTRES"   },
    {SIGFPE,     FPE_FLTINV,    "FPE_FLTINV"   },
    {SIGFPE,     FPE_FLTSUB,    "FPE_FLTSUB"   },
    {SIGTRAP,    TRAP_BRKPT,    "TRAP_BRKPT"   },
    {SIGTRAP,    TRAP_TRACE,    "TRAP_TRACE"   },
    {SIGTRAP,    TRAP_BRANCH,   "TRAP_BRANCH"  },
    {SIGTRAP,    TRAP_HWBKPT,   "TRAP_HWBKPT"  },
};

} // namespace

std::string_view signalName(int signal) noexcept {
    for (const SignalRow& row : kSignalRows) {
        if (row.signal == signal) {
            return row.name;
        }
    }
    return "signal";
}

std::string_view signalCodeName(int signal, int code) noexcept {
    for (const CodeRow& row : kCodeRows) {
        if (row.code == code && (row.signal == kAnySignal || row.signal == signal)) {
            return row.name;
        }
    }
    return "code";
}

} // namespace NS
