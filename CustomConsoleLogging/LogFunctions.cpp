#include "CustomConsoleLogging/LoggingState.h"
#include "CustomConsoleLogging/consoleLogging.h"
#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Clock.h"

#include <string>

namespace {

std::string messageLine(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    return NS::stringWithFormatArguments(std::string(format) + "\n", arguments)->utf8();
}

} // namespace

void _LogArguments(std::string_view format, std::span<const NS::FormatArgument> arguments) {
    const std::string message = messageLine(format, arguments);
    std::string line = "[";
    LoggingState::shared().coarse.appendDate(NS::absoluteTimeGetCurrent(), line);
    line += "]: " + message;
    if (const auto logging = QVLogging::sharedInstance()) {
        logging->fileMessage_succinct(*NS::str(line), false);
    }
}

void _SuccinctlyLogArguments(std::string_view format,
                             std::span<const NS::FormatArgument> arguments) {
    const std::string message = messageLine(format, arguments);
    if (const auto logging = QVLogging::sharedInstance()) {
        logging->fileMessage_succinct(*NS::str(message), true);
    }
}

void exceptionHandler(const NS::Exception& exception) {
    _Log("DEBUG ", nullptr, 0, nullptr, "================= Exception: %@", exception.reason());
    _Log("DEBUG ", nullptr, 0, nullptr, "%@", exception.userInfo());
    const auto addresses = exception.callStackReturnAddresses();
    const auto symbols = exception.callStackSymbols();
    for (std::size_t i = 0; i < symbols->count(); ++i) {
        _Log("DEBUG ", nullptr, 0, nullptr, "%@ :: %@", addresses->objectAtIndex(i),
             symbols->objectAtIndex(i));
    }
}
