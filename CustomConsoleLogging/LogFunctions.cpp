#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/TextBytes.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Clock.h"

namespace {

// A line's message, with its end.
NS::StringBuilder lineOf(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    NS::StringBuilder line;
    NS::appendFormatWithArguments(line, format, arguments);
    line.append('\n');
    return line;
}

} // namespace

void logLine(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    const NS::StringBuilder line = lineOf(format, arguments);
    LoggingState& state = LoggingState::shared();
    if (state.instance.peek() != nullptr) {
        // The clock is read here, and once more for the outer stamp: the two may differ by a
        // second.
        const double coarse = NS::absoluteTimeGetCurrent();
        withUtf8(line, [&](std::string_view bytes) {
            state.file.append(state.instance, bytes, LogFile::Stamp::kFine, coarse);
        });
    }
}

void logSuccinctLine(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    const NS::StringBuilder line = lineOf(format, arguments);
    LoggingState& state = LoggingState::shared();
    withUtf8(line, [&](std::string_view bytes) {
        state.file.append(state.instance, bytes, LogFile::Stamp::kNone);
    });
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
