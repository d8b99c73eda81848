#include "Programs/Inspect/SymbolicReport.h"

#include "Programs/Inspect/BuildId.h"
#include "Programs/Inspect/CrashReport.h"
#include "Programs/Inspect/InspectionError.h"
#include "Programs/Inspect/Printable.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Inspection {

namespace {

// A report has at most some hundred of each; more of them are left as they are.
constexpr std::size_t kMostFrames = 1024;
constexpr std::size_t kMostModules = 64;

constexpr std::string_view kUnknownModule = "???";

using FramesByModule = std::map<std::string, std::vector<const ReportFrame*>>;

FramesByModule framesByModule(const CrashReport& report) {
    FramesByModule frames;
    std::size_t taken = 0;
    for (const ReportFrame& frame : report.frames) {
        const bool isNew = !frames.contains(frame.module);
        if (taken == kMostFrames || (isNew && frames.size() == kMostModules)) {
            break;
        }
        if (frame.module != kUnknownModule) {
            frames[frame.module].push_back(&frame);
            ++taken;
        }
    }
    return frames;
}

// The address within the call: the one to return to may lie on the next line, or in the next
// function.
std::uint64_t placeOf(const ReportFrame& frame) noexcept {
    return frame.isInstruction || frame.address == 0 ? frame.address : frame.address - 1;
}

// What the kernel adds to the path of a file that was replaced, by an update mostly, while it was
// in use. The very build may be there again.
constexpr std::string_view kDeleted = " (deleted)";

// The file of the very build, where it is at hand.
std::optional<ProgramFile> fileOf(const ReportModule& module) {
    std::vector<std::string> paths{module.path};
    if (module.path.ends_with(kDeleted)) {
        paths.push_back(module.path.substr(0, module.path.size() - kDeleted.size()));
    }
    for (const std::string& path : paths) {
        ProgramFile file(path);
        if (buildIdOf(file) == module.buildId) {
            return file;
        }
    }
    return std::nullopt;
}

class SymbolicReport {
  public:
    SymbolicReport(const CrashReport& report, const SourceLookup& lookup, std::ostream& notes)
        : report_(report), lookup_(lookup), notes_(notes), lines_(report.lines.size()) {
        for (const auto& [name, frames] : framesByModule(report)) {
            if (const auto file = usableFile(name)) {
                lookUp(name, *file, frames);
            }
        }
    }

    void print(std::ostream& out) const {
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            out << printable(report_.lines[i]) << '\n';
            for (const SourceLine& line : lines_[i]) {
                out << "        " << printable(textOf(line)) << '\n';
            }
        }
    }

  private:
    static std::string textOf(const SourceLine& line) {
        return (line.function.empty() ? "???" : line.function) +
               (line.place.empty() ? "" : " at " + line.place);
    }

    void leave(const std::string& name, const std::string& why) {
        notes_ << "no source lines for " << printable(name) << ": " << printable(why) << '\n';
    }

    std::optional<ProgramFile> usableFile(const std::string& name) {
        const auto isNamed = [&](const ReportModule& each) {
            return each.name == name;
        };
        const auto module = std::ranges::find_if(report_.modules, isNamed);
        if (module == report_.modules.end()) {
            leave(name, "the report does not tell its file");
        } else if (std::ranges::count_if(report_.modules, isNamed) > 1) {
            leave(name, "the report has several files of that name");
        } else if (module->buildId.empty()) {
            leave(name, "the report does not tell its build");
        } else if (auto file = fileOf(*module)) {
            return file;
        } else {
            leave(name, "the build that crashed is not at " + module->path);
        }
        return std::nullopt;
    }

    void lookUp(const std::string& name, const ProgramFile& file,
                const std::vector<const ReportFrame*>& frames) {
        if (toolIsMissing_) {
            return;
        }
        std::vector<std::uint64_t> places;
        std::ranges::transform(frames, std::back_inserter(places),
                               [](const ReportFrame* frame) { return placeOf(*frame); });
        std::vector<std::vector<SourceLine>> found;
        const SourceLookup::Outcome outcome = lookup_.look(file.path(), places, found);
        if (outcome == SourceLookup::Outcome::kFailed) {
            leave(name, "looking them up failed or took too long");
        } else if (outcome == SourceLookup::Outcome::kNoTool) {
            toolIsMissing_ = true;
            notes_ << "no source lines: neither eu-addr2line (elfutils) nor addr2line (binutils) "
                      "is installed\n";
        }
        for (std::size_t i = 0; i < found.size(); ++i) {
            lines_[frames[i]->line] = std::move(found[i]);
        }
    }

    const CrashReport& report_;
    const SourceLookup& lookup_;
    std::ostream& notes_;
    std::vector<std::vector<SourceLine>> lines_; // of each of the report's lines
    bool toolIsMissing_ = false;
};

} // namespace

void printReport(std::string_view text, const SourceLookup& lookup, std::ostream& out,
                 std::ostream& notes) {
    const auto report = readCrashReport(text);
    if (!report) {
        throw Error("it is no crash report of version 1");
    }
    SymbolicReport(*report, lookup, notes).print(out);
}

} // namespace Inspection
