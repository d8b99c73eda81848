#include "Programs/Inspect/CrashReport.h"

#include <algorithm>
#include <charconv>

namespace Inspection {

namespace {

constexpr std::string_view kVersionKey = "Report Version:";
constexpr std::string_view kVersion = "1";

struct PlacedModule {
    std::uint64_t start; // in the crashed process's memory
    ReportModule module;
};

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        lines.push_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(lines.back().size() + 1, text.size()));
    }
    return lines;
}

std::string_view trimmed(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

bool isKnownReport(const std::vector<std::string_view>& lines) {
    const auto headEnd = std::ranges::find(lines, std::string_view());
    return !lines.empty() && lines.front().starts_with("Process:") &&
           std::any_of(lines.begin(), headEnd, [](std::string_view line) {
               return line.starts_with(kVersionKey) &&
                      trimmed(line.substr(kVersionKey.size())) == kVersion;
           });
}

// Takes "0x" and sixteen digits, as the report writes every address, off a text's front.
std::optional<std::uint64_t> takeAddress(std::string_view& text) noexcept {
    constexpr std::size_t kLength = 18;
    if (text.size() < kLength || !text.starts_with("0x")) {
        return std::nullopt;
    }
    std::uint64_t address = 0;
    const char* const end = text.data() + kLength;
    const auto [parsed, error] = std::from_chars(text.data() + 2, end, address, 16);
    if (error != std::errc() || parsed != end) {
        return std::nullopt;
    }
    text.remove_prefix(kLength);
    return address;
}

// Takes the digits of a frame's number off a text's front.
bool takeIndex(std::string_view& text) noexcept {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const bool isIndex = digits > 0 && digits < text.size() && text[digits] == ' ';
    text.remove_prefix(isIndex ? digits : 0);
    return isIndex;
}

// "0   module name   0x000000000001a2b4   NS::foo() + 20"; the module's name may have blanks.
std::optional<ReportFrame> frameIn(std::string_view text) {
    if (!takeIndex(text)) {
        return std::nullopt;
    }
    for (std::size_t blank = text.find(" 0x"); blank != std::string_view::npos;
         blank = text.find(" 0x", blank + 1)) {
        std::string_view rest = text.substr(blank + 1);
        const auto address = takeAddress(rest);
        if (address && (rest.empty() || rest.front() == ' ')) {
            return ReportFrame{0, std::string(trimmed(text.substr(0, blank))), *address, false};
        }
    }
    return std::nullopt;
}

bool isHexadecimal(std::string_view text) noexcept {
    return !text.empty() && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

unsigned digitValue(char digit) noexcept {
    return static_cast<unsigned>(digit <= '9' ? digit - '0' : digit - 'a' + 10);
}

// Turns the report's "\\", "\n", "\t" and "\x1b" back into what they stand for.
std::string unescaped(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
        std::size_t length = 1;
        char byte = text.front();
        if (text.size() > 3 && text.starts_with("\\x") && isHexadecimal(text.substr(2, 2))) {
            byte = static_cast<char>(digitValue(text[2]) * 16 + digitValue(text[3]));
            length = 4;
        } else if (text.size() > 1 && text.front() == '\\') {
            byte = text[1] == 'n' ? '\n' : (text[1] == 't' ? '\t' : text[1]);
            length = 2;
        }
        bytes.push_back(byte);
        text.remove_prefix(length);
    }
    return bytes;
}

// "0x… - 0x…  module name  <build id>  /path"; neither a name nor an id has a slash in it.
std::optional<PlacedModule> moduleIn(std::string_view text) {
    const auto start = takeAddress(text);
    if (!start || !text.starts_with(" - ")) {
        return std::nullopt;
    }
    text.remove_prefix(3);
    const bool hasEnd = takeAddress(text).has_value();
    const std::size_t path = text.find("  /");
    const std::size_t id = text.substr(0, path).rfind("  <");
    if (!hasEnd || path == std::string_view::npos || id == std::string_view::npos ||
        text[path - 1] != '>') {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(id + 3, path - id - 4);
    return PlacedModule{
        *start,
        {std::string(trimmed(text.substr(0, id))), std::string(isHexadecimal(digits) ? digits : ""),
               unescaped(text.substr(path + 2))}
    };
}

// The instruction pointer in a line of registers, each a name and its value.
std::optional<std::uint64_t> instructionIn(std::string_view text) {
    for (const std::string_view name : {"rip ", "pc "}) {
        const std::size_t found = text.find(name);
        if (found != std::string_view::npos && (found == 0 || text[found - 1] == ' ')) {
            std::string_view value = trimmed(text.substr(found + name.size()));
            return takeAddress(value);
        }
    }
    return std::nullopt;
}

class Reader {
  public:
    explicit Reader(CrashReport& report) noexcept : report_(report) {}

    void read(std::size_t number) {
        const std::string_view line = report_.lines[number];
        if (line.empty()) {
            section_ = Section::kNone;
        } else if (section_ == Section::kNone) {
            section_ = sectionOf(line);
        } else {
            readIn(section_, number);
        }
    }
    // Tells the instruction that was running, which begins the stack, unless the stack is that of
    // an exception's raising: all of it is calls then. The register says which.
    void finish() {
        if (!report_.frames.empty()) {
            ReportFrame& first = report_.frames.front();
            const auto address = std::ranges::find(
                modules_, first.module, [](const PlacedModule& each) { return each.module.name; });
            const std::uint64_t start = address == modules_.end() ? 0 : address->start;
            first.isInstruction = !knowsInstruction_ || instruction_ == first.address ||
                                  instruction_ == first.address + start;
        }
        for (PlacedModule& each : modules_) {
            report_.modules.push_back(std::move(each.module));
        }
    }

  private:
    enum class Section : std::uint8_t { kNone, kOther, kStack, kRegisters, kModules };

    static Section sectionOf(std::string_view line) noexcept {
        if (line.starts_with("Thread ")) {
            return Section::kStack;
        }
        if (line == "Registers:") {
            return Section::kRegisters;
        }
        return line == "Binary Images:" ? Section::kModules : Section::kOther;
    }
    void readIn(Section section, std::size_t number) {
        const std::string_view line = report_.lines[number];
        if (section == Section::kStack) {
            readFrame(number);
        } else if (section == Section::kRegisters && !knowsInstruction_) {
            const std::optional<std::uint64_t> found = instructionIn(line);
            knowsInstruction_ = found.has_value();
            instruction_ = found.value_or(0);
        } else if (section == Section::kModules) {
            if (auto module = moduleIn(line)) {
                modules_.push_back(std::move(*module));
            }
        }
    }
    void readFrame(std::size_t number) {
        if (auto frame = frameIn(report_.lines[number])) {
            frame->line = number;
            report_.frames.push_back(std::move(*frame));
        }
    }

    CrashReport& report_;
    Section section_ = Section::kNone;
    std::vector<PlacedModule> modules_;
    // Apart, as g++ 12 takes an optional here for uninitialised when it optimises.
    bool knowsInstruction_ = false;
    std::uint64_t instruction_ = 0;
};

} // namespace

std::optional<CrashReport> readCrashReport(std::string_view text) {
    CrashReport report;
    report.lines = linesOf(text);
    if (!isKnownReport(report.lines)) {
        return std::nullopt;
    }
    Reader reader(report);
    for (std::size_t number = 0; number < report.lines.size(); ++number) {
        reader.read(number);
    }
    reader.finish();
    return report;
}

} // namespace Inspection
