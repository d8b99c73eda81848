#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Array.h"

#include <string>

namespace {

// "[2026-11-16 06:56:27]: "
constexpr std::size_t kCoarseHead = 23;

void appendUtf8(std::string& line, const NS::String& text) {
    if (text.isAscii()) {
        line += text.ascii();
    } else {
        line += text.utf8();
    }
}

void append(std::string_view line, LogFile::Stamp stamp) {
    LoggingState& state = LoggingState::shared();
    if (const auto logging = state.instance.load()) {
        state.file.append(*logging, line, stamp);
    }
}

} // namespace

void logLine(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    const auto message = NS::stringWithFormatArguments(format, arguments);
    std::string line;
    line.reserve(kCoarseHead + message->length() + 1);
    line += '[';
    // The clock is read here, and once more for the outer stamp: the two may differ by a second.
    line += LoggingState::shared().coarseStamp.now();
    line += "]: ";
    appendUtf8(line, *message);
    line += '\n';
    append(line, LogFile::Stamp::kFine);
}

void logSuccinctLine(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    std::string line;
    appendUtf8(line, *NS::stringWithFormatArguments(format, arguments));
    line += '\n';
    append(line, LogFile::Stamp::kNone);
}

void exceptionHandler(const NS::Exception& exception) {
    constexpr LogOrigin kNowhere{};
    _Log("DEBUG ", kNowhere, "================= Exception: %@", exception.reason());
    _Log("DEBUG ", kNowhere, "%@", exception.userInfo());
    const auto addresses = exception.callStackReturnAddresses();
    const auto symbols = exception.callStackSymbols();
    for (std::size_t i = 0; i < symbols->count(); ++i) {
        _Log("DEBUG ", kNowhere, "%@ :: %@", addresses->objectAtIndex(i),
             symbols->objectAtIndex(i));
    }
}
