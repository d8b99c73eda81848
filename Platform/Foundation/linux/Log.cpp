#include "Platform/Foundation/Log.h"

#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/ProcessInfo.h"

#include <string>
#include <unistd.h>

namespace NS {

void logArguments(std::string_view format, std::span<const FormatArgument> arguments) {
    static DateFormatter& formatter = *new DateFormatter("yyyy-MM-dd HH:mm:ss.SSS");
    const auto process = ProcessInfo::processInfo();
    std::string line;
    formatter.appendDate(absoluteTimeGetCurrent(), line);
    line += " " + process->processName()->utf8() + "[" +
            std::to_string(process->processIdentifier()) + ":" +
            std::to_string(currentThreadIdentifier()) + "] ";
    line += stringWithFormatArguments(format, arguments)->utf8() + "\n";
    // One call, so that lines stay whole; there is nobody to tell of a console that is gone.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

} // namespace NS
