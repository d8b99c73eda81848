// Crashes in the way that its last argument names: the process of a test, in its home folder. The
// arguments before it say what else is the matter, in the order in which it is done; "--report"
// switches the reporter on.

#include "Platform/CrashReporter/AlternateStack.h"
#include "Platform/CrashReporter/CrashReporter.h"
#include "Platform/Foundation/Exception.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <link.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

// Each with a name that a stack can tell: neither inlined nor local to the file, and not at the
// end of its caller.
namespace Crashing {

volatile int* volatile nowhere = nullptr;
volatile int zero = 0;
volatile int work = 0;

[[gnu::noinline]] void dereferenceNull() {
    *nowhere = 7;
    work = 1;
}

[[gnu::noinline]] void callNull() {
    using Function = void (*)();
    volatile Function function = nullptr;
    function();
    work = 1;
}

[[gnu::noinline]] void callData() {
    using Function = void (*)();
    volatile Function function =
        reinterpret_cast<Function>(reinterpret_cast<std::uintptr_t>(&work));
    function();
    work = 1;
}

[[gnu::noinline]] void abortDeliberately() {
    std::abort();
}

// NOLINTNEXTLINE(misc-no-recursion)
[[gnu::noinline]] int recurseWithoutEnd(int depth) {
    std::array<volatile char, 100> frame{};
    frame[static_cast<std::size_t>(depth) % frame.size()] = 1;
    return zero != 0 ? depth : recurseWithoutEnd(depth + 1) + frame[0];
}

[[gnu::noinline]] void overflowTheStack() {
    work = recurseWithoutEnd(0);
}

[[gnu::noinline]] void freeTwice() {
    void* volatile block = std::malloc(40);
    std::free(block);
    std::free(block); // NOLINT: what is to crash
    work = 1;
}

// Behind a large block lies what the allocator knows of the rest of its memory. A second thread has
// made it take its lock, which it holds when it finds out.
[[gnu::noinline]] void damageTheHeap() {
    std::thread([] { work = 2; }).join();
    constexpr std::size_t kLarge = 100'000;
    // Read anew each time: optimising, the compiler would see what is wrong here.
    volatile unsigned char* volatile block =
        static_cast<volatile unsigned char*>(std::malloc(kLarge));
    for (std::size_t i = kLarge; i < kLarge + 24; ++i) {
        block[i] = 0xFF;
    }
    void* volatile more = std::malloc(kLarge);
    // An allocator that keeps such things elsewhere has something in front of the block.
    for (std::size_t i = 1; i <= 16; ++i) {
        *(block - i) = 0xFF;
    }
    std::free(const_cast<unsigned char*>(block));
    work = more == nullptr ? 3 : 4;
}

[[gnu::noinline]] void raiseOurs() {
    NS::Exception::raise("PeerException", "the first line\nthe second line");
}

// NOLINTNEXTLINE(misc-no-recursion)
[[gnu::noinline]] int raiseBelow(int depth) {
    if (depth > 0) {
        return raiseBelow(depth - 1) + work;
    }
    if (zero == 0) {
        raiseOurs();
    }
    return zero;
}

[[gnu::noinline]] void raiseFarDown() {
    work = raiseBelow(300);
}

[[gnu::noinline]] void raiseWithoutText() {
    NS::Exception::raise("", "");
}

[[gnu::noinline]] void throwForeign() {
    throw std::runtime_error("of the language");
}

[[gnu::noinline]] void divideByZero() {
    work = 7 / zero;
}

[[gnu::noinline]] void runNoInstruction() {
    __builtin_trap();
}

[[gnu::noinline]] void stopForADebugger() {
    (void)std::raise(SIGTRAP);
    work = 1;
}

[[gnu::noinline]] void makeAForbiddenCall() {
    (void)std::raise(SIGSYS);
    work = 1;
}

[[gnu::noinline]] void readBeyondTheFile() {
    const int file = ::open("short-file", O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    auto* const bytes = static_cast<volatile char*>(
        ::mmap(nullptr, 8192, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    work = bytes[5000];
}

// What the frames of the stack say of their callers is gone.
[[gnu::noinline]] void damageTheStack() {
    std::array<volatile std::uintptr_t, 4> frame{};
    volatile std::uintptr_t* const start = frame.data();
    for (std::size_t i = 0; i < 200; ++i) {
        start[i] = 0x1234567890;
    }
    *nowhere = 7;
}

[[gnu::noinline]] void crashInAThread() {
    std::thread([] {
        const NS::AlternateStack stack;
        dereferenceNull();
    }).join();
    work = 1;
}

[[gnu::noinline]] void overflowTheStackOfAThread() {
    std::thread([] {
        const NS::AlternateStack stack;
        overflowTheStack();
    }).join();
    work = 1;
}

[[gnu::noinline]] void crashInManyThreads() {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back(&dereferenceNull);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

[[gnu::noinline]] void crashInAChild() {
    const pid_t child = ::fork();
    if (child == 0) {
        dereferenceNull();
    }
    int status = 0;
    (void)::waitpid(child, &status, 0);
    std::_Exit(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
}

} // namespace Crashing

namespace {

namespace fs = std::filesystem;

fs::path reportsFolder() {
    return fs::path(std::getenv("XDG_STATE_HOME")) / "Logs" / "DiagnosticReports";
}

// As a program does that has a handler of its own.
void sayGoodbye(int number) {
    constexpr std::string_view kText = "goodbye\n";
    (void)!::write(STDOUT_FILENO, kText.data(), kText.size());
    (void)std::signal(number, SIG_DFL);
    (void)std::raise(number);
}

void report() {
    NS::startCrashReporter("CrashingPeer", "1.2.3");
}

// Under a name that the client's gatherer looks for.
void reportAsExtension() {
    NS::startCrashReporter("QVFinderExtension", "1.2.3");
}

void setOwnHandlers() {
    (void)std::signal(SIGSEGV, &sayGoodbye);
    (void)std::signal(SIGABRT, &sayGoodbye);
}

void setReturningHandler() {
    (void)std::signal(SIGSEGV, [](int number) { (void)std::signal(number, SIG_DFL); });
}

void ignoreASignal() {
    (void)std::signal(SIGSEGV, SIG_IGN);
}

void closeStreams() {
    ::close(STDIN_FILENO);
    ::close(STDOUT_FILENO);
    ::close(STDERR_FILENO);
}

void closeAll() {
    (void)::close_range(3, ~0U, 0);
}

void removeFolder() {
    fs::remove_all(reportsFolder().parent_path());
}

void leaveNoDescriptors() {
    const rlimit few{64, 64};
    (void)::setrlimit(RLIMIT_NOFILE, &few);
    while (::dup(STDIN_FILENO) >= 0) {
    }
}

void allowCoreDump() {
    rlimit limit{};
    (void)::getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = limit.rlim_max;
    (void)::setrlimit(RLIMIT_CORE, &limit);
}

void replaceFolderByLink() {
    fs::remove_all(reportsFolder());
    fs::create_directory("elsewhere");
    fs::create_directory_symlink(fs::absolute("elsewhere"), reportsFolder());
}

// A library whose file is emptied while it is in memory.
void mapAnEmptiedLibrary() {
    fs::copy_file("/proc/self/exe", "emptied.so");
    const int file = ::open("emptied.so", O_RDWR | O_CLOEXEC);
    (void)::mmap(nullptr, 8192, PROT_READ | PROT_EXEC, MAP_PRIVATE, file, 0);
    (void)!::ftruncate(file, 0);
    (void)::close(file);
}

// Of the dynamic linker, which another thread then holds until the end.
void lockTheLinker() {
    static std::atomic<bool> isLocked{false};
    std::thread([] {
        const auto wait = [](dl_phdr_info*, std::size_t, void*) {
            isLocked = true;
            isLocked.notify_one();
            return ::pause();
        };
        (void)::dl_iterate_phdr(wait, nullptr);
    }).detach();
    isLocked.wait(false);
}

void waitForASignal() {
    constexpr std::string_view kText = "waiting\n";
    (void)!::write(STDOUT_FILENO, kText.data(), kText.size());
    (void)::pause();
}

struct Step {
    std::string_view name;
    void (*run)();
};

constexpr Step kSteps[] = {
    {"--report",            &report                             },
    {"--report-extension",  &reportAsExtension                  },
    {"--own-handler",       &setOwnHandlers                     },
    {"--returning-handler", &setReturningHandler                },
    {"--ignore",            &ignoreASignal                      },
    {"--close-streams",     &closeStreams                       },
    {"--close-all",         &closeAll                           },
    {"--no-descriptors",    &leaveNoDescriptors                 },
    {"--allow-core",        &allowCoreDump                      },
    {"--lock-linker",       &lockTheLinker                      },
    {"--emptied-library",   &mapAnEmptiedLibrary                },
    {"--remove-folder",     &removeFolder                       },
    {"--link-folder",       &replaceFolderByLink                },
    {"null",                &Crashing::dereferenceNull          },
    {"call-null",           &Crashing::callNull                 },
    {"call-data",           &Crashing::callData                 },
    {"abort",               &Crashing::abortDeliberately        },
    {"overflow",            &Crashing::overflowTheStack         },
    {"free-twice",          &Crashing::freeTwice                },
    {"heap",                &Crashing::damageTheHeap            },
    {"raise",               &Crashing::raiseOurs                },
    {"raise-nothing",       &Crashing::raiseWithoutText         },
    {"raise-far-down",      &Crashing::raiseFarDown             },
    {"throw",               &Crashing::throwForeign             },
    {"divide",              &Crashing::divideByZero             },
    {"no-instruction",      &Crashing::runNoInstruction         },
    {"trap",                &Crashing::stopForADebugger         },
    {"forbidden-call",      &Crashing::makeAForbiddenCall       },
    {"beyond-file",         &Crashing::readBeyondTheFile        },
    {"stack",               &Crashing::damageTheStack           },
    {"thread",              &Crashing::crashInAThread           },
    {"overflow-in-thread",  &Crashing::overflowTheStackOfAThread},
    {"threads",             &Crashing::crashInManyThreads       },
    {"child",               &Crashing::crashInAChild            },
    {"wait",                &waitForASignal                     },
};

} // namespace

int main(int argc, char** argv) {
    fs::current_path(std::getenv("HOME"));
    for (int i = 1; i < argc; ++i) {
        const auto* const step =
            std::find_if(std::begin(kSteps), std::end(kSteps),
                         [&](const Step& each) { return each.name == argv[i]; });
        if (step == std::end(kSteps)) {
            (void)std::fprintf(stderr, "CrashingPeer: no step %s\n", argv[i]);
            return 2;
        }
        step->run();
    }
    return 0;
}
