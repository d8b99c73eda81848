#include "Platform/Foundation/Log.h"

#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/ProcessInfo.h"

#include <string>
#include <unistd.h>

namespace NS {

namespace {

// Stays usable while the process ends.
DateFormatter& stampFormatter() {
    static DateFormatter& formatter = *new DateFormatter("yyyy-MM-dd HH:mm:ss.SSS");
    return formatter;
}

} // namespace

void logArguments(std::string_view format, std::span<const FormatArgument> arguments) {
    const std::string message = stringWithFormatArguments(format, arguments)->utf8();
    const auto process = ProcessInfo::processInfo();
    std::string line;
    line += stampFormatter().now();
    line += stringWithFormat(" %@[%d:%d] ", process->processName(), process->processIdentifier(),
                             currentThreadIdentifier())
                ->utf8();
    line += message;
    line += '\n';
    // Nobody is left to tell of a console that does not take it.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

} // namespace NS
