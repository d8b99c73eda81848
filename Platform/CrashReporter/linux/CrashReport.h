#pragma once

#include "Platform/CrashReporter/ZoneOffsets.h"
#include "Platform/CrashReporter/linux/CrashReportFile.h"
#include "Platform/CrashReporter/linux/CrashedStack.h"
#include "Platform/CrashReporter/linux/FixedText.h"
#include "Platform/CrashReporter/linux/LoadedModules.h"
#include "Platform/CrashReporter/linux/ReportText.h"
#include "Platform/Foundation/linux/SymbolFile.h"

#include <array>
#include <csignal>
#include <string>
#include <string_view>
#include <ucontext.h>

namespace NS {

// The signal that ends the process, on the thread that it reached.
struct Crash {
    int signal;
    const siginfo_t* info;
    ucontext_t* context;
};

// The report of this process's crash. All that it needs it has in itself, and so it stands in
// static storage; prepare() once, while the process is well, then write() from a signal handler.
// Docs/crash-reports.md shows what it writes.
class CrashReport {
  public:
    // False when the folder cannot be opened; write() then tries again.
    bool prepare(const std::string& folder, std::string_view process, std::string_view version);

    // Each part that faults is cut short, and says so; the others are written all the same.
    void write(const Crash& crash) noexcept;

  private:
    using Section = void (CrashReport::*)(const Crash& crash) noexcept;
    struct Frame {
        CrashedFrame at;
        const LoadedModule* module;
        SymbolQuery symbol;
    };

    void takeStack(const Crash& crash) noexcept;
    void writeSection(std::string_view subject, Section section, const Crash& crash) noexcept;

    void writeProcess(const Crash& crash) noexcept;
    void writeDate() noexcept;
    void writeSignal(const Crash& crash) noexcept;
    void writeInformation(const Crash& crash) noexcept;
    void readModules(const Crash& crash) noexcept;
    void readStack(const Crash& crash) noexcept;
    void findNames(const Crash& crash) noexcept;
    void writeStack(const Crash& crash) noexcept;
    void writeRegisters(const Crash& crash) noexcept;
    void writeModules(const Crash& crash) noexcept;

    void writeLine(std::string_view text) noexcept;
    std::string_view abortMessage() const noexcept;
    void takeFrame(const CrashedFrame& frame) noexcept;
    void findNamesIn(const LoadedModule& module) noexcept;
    void writeFrame(std::size_t index, const Frame& frame) noexcept;
    void writeName(const Frame& frame) noexcept;

    FixedText<64> process_;
    FixedText<64> version_;
    FixedText<256> host_;
    FixedText<4096> program_;
    FixedText<512> system_;
    ZoneOffsets zone_{};
    // Where the C library notes the place of its own, null where it does not.
    const void* const* abortMessage_ = nullptr;

    CrashReportFile file_;
    ReportText text_;
    timespec now_{};
    LoadedModules modules_;
    CrashedStack stack_;
    std::array<Frame, CrashedStack::kInner + CrashedStack::kOuter> frames_{};
    std::size_t frameCount_ = 0;
    // The questions for one module, and whose they are.
    std::array<SymbolQuery, CrashedStack::kInner + CrashedStack::kOuter> queries_{};
    std::array<std::size_t, CrashedStack::kInner + CrashedStack::kOuter> asked_{};
};

} // namespace NS
