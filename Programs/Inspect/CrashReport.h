#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Inspection {

// A crash report's text (Docs/crash-reports.md), taken apart as far as its addresses can be looked
// up. What does not have the format is left aside: it is only printed.

struct ReportFrame {
    std::size_t line; // of the report, counted from 0
    std::string module;
    std::uint64_t address; // within the module, as its file was linked
    // The very instruction that was running; any other frame's address is the one to return to.
    bool isInstruction;
};

struct ReportModule {
    std::string name;
    std::string buildId; // in lower case; empty where the report gives none
    std::string path;    // absolute
};

struct CrashReport {
    std::vector<std::string_view> lines; // of the text that was read
    std::vector<ReportFrame> frames;     // innermost first; "???" is the module of one in none
    std::vector<ReportModule> modules;
};

// Nothing when the text is no crash report of the version that is known. The text outlives the
// result.
std::optional<CrashReport> readCrashReport(std::string_view text);

} // namespace Inspection
