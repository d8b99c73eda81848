#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/TextBytes.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Array.h"

namespace {

// A line's message, without its end.
NS::StringBuilder messageOf(std::string_view format,
                            std::span<const NS::FormatArgument> arguments) {
    NS::StringBuilder message;
    NS::appendFormatWithArguments(message, format, arguments);
    return message;
}

} // namespace

void logLine(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    const NS::StringBuilder message = messageOf(format, arguments);
    LoggingState& state = LoggingState::shared();
    if (const auto logging = state.instance.load()) {
        // The clock is read here, and once more for the outer stamp: the two may differ by a
        // second.
        const NS::DateFormatter::Text coarse = state.coarseStamp.now();
        withUtf8(message, [&](std::string_view bytes) {
            state.file.append(*logging, {"[", coarse, "]: ", bytes, "\n"}, LogFile::Stamp::kFine);
        });
    }
}

void logSuccinctLine(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    const NS::StringBuilder message = messageOf(format, arguments);
    LoggingState& state = LoggingState::shared();
    if (const auto logging = state.instance.load()) {
        withUtf8(message, [&](std::string_view bytes) {
            state.file.append(*logging, {bytes, "\n"}, LogFile::Stamp::kNone);
        });
    }
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
