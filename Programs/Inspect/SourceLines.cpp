#include "Programs/Inspect/SourceLines.h"

#include "Programs/Inspect/ChildProcess.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string_view>

namespace Inspection {

namespace {

constexpr std::string_view kTools[] = {"eu-addr2line", "addr2line"};

// "0x" and sixteen digits, as the tools print an address.
std::string textOf(std::uint64_t address) {
    std::array<char, 24> text{};
    (void)std::snprintf(text.data(), text.size(), "0x%016llx",
                        static_cast<unsigned long long>(address));
    return text.data();
}

std::vector<std::string> commandFor(std::string_view tool, const std::string& path,
                                    std::span<const std::uint64_t> addresses) {
    // Each address before its lines, functions, in their written form, with those inlined.
    std::vector<std::string> command{std::string(tool), "-a", "-f", "-C", "-i", "-e", path};
    for (const std::uint64_t address : addresses) {
        command.push_back(textOf(address));
    }
    return command;
}

std::string_view takeLine(std::string_view& text) noexcept {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

// One tool goes on with where the function was inlined, which the next lines tell as well.
std::string functionIn(std::string_view line) {
    return std::string(line == "??" ? "" : line.substr(0, line.find(" inlined at /")));
}

// Without what stands in place of a file or line that is not known.
std::string placeIn(std::string_view line) {
    if (line.starts_with("??")) {
        return "";
    }
    const std::size_t colon = line.find_last_of(':');
    const bool noLine = colon != std::string_view::npos &&
                        (line.substr(colon) == ":?" || line.substr(colon) == ":0");
    return std::string(noLine ? line.substr(0, colon) : line);
}

std::vector<SourceLine> takeLines(std::string_view& answer) {
    std::vector<SourceLine> lines;
    while (!answer.empty() && !answer.starts_with("0x")) {
        SourceLine line;
        line.function = functionIn(takeLine(answer));
        line.place = placeIn(takeLine(answer));
        if (!line.function.empty() || !line.place.empty()) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

// Nothing when the answer is not one to these addresses.
std::optional<std::vector<std::vector<SourceLine>>>
parse(std::string_view answer, std::span<const std::uint64_t> addresses) {
    std::vector<std::vector<SourceLine>> lines;
    for (const std::uint64_t address : addresses) {
        if (takeLine(answer) != textOf(address)) {
            return std::nullopt;
        }
        lines.push_back(takeLines(answer));
    }
    return lines;
}

} // namespace

SourceLookup::Outcome SourceLookup::look(const std::string& path,
                                         std::span<const std::uint64_t> addresses,
                                         std::vector<std::vector<SourceLine>>& lines) const {
    lines.clear();
    for (const std::string_view tool : kTools) {
        const ChildResult result =
            runChild(commandFor(tool, path, addresses), {deadline_, kLongestAnswer});
        if (result.end == ChildResult::End::kNotThere) {
            continue;
        }
        auto parsed =
            result.end == ChildResult::End::kDone ? parse(result.output, addresses) : std::nullopt;
        if (!parsed) {
            return Outcome::kFailed;
        }
        lines = std::move(*parsed);
        return Outcome::kDone;
    }
    return Outcome::kNoTool;
}

} // namespace Inspection
