#pragma once

#include "CustomConsoleLogging/QVLogging.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Format.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

// The logging library: QVLogging, and the functions that write its lines.

// Where in the source a line is written from. No output shows it.
struct LogOrigin {
    const char* file = nullptr;
    std::int32_t line = 0;
    const char* function = nullptr;

    // The line that calls it, with the name of the operation that it stands in, such as
    // "-[FinderSync init]".
    static constexpr LogOrigin here(const char* function, const char* file = __builtin_FILE(),
                                    std::int32_t line = __builtin_LINE()) noexcept {
        return {file, line, function};
    }
};

// Logs an exception that nothing caught: its reason, its user info, and a line for each frame of
// its call stack.
void exceptionHandler(const NS::Exception& exception);

// What the functions below do, with their arguments collected.
void logLine(std::string_view format, std::span<const NS::FormatArgument> arguments);
void logSuccinctLine(std::string_view format, std::span<const NS::FormatArgument> arguments);

// These two names are reserved to the compiler by C++'s rules, and are what all of the system's
// callers write; no compiler of ours has them.
// NOLINTBEGIN(bugprone-reserved-identifier)

// Writes one line: two stamps, and the message of a format (see Format.h) and its arguments. Lost
// before the setup. The level ("DEBUG " is the one in use) and the origin reach no output. Any
// thread. Raises NSInvalidArgumentException for a format that is wrong.
template <class... Args>
void _Log(std::string_view /*level*/, const LogOrigin& /*origin*/, std::string_view format,
          const Args&... arguments) {
    const std::array<NS::FormatArgument, sizeof...(Args)> list{NS::FormatArgument(arguments)...};
    logLine(format, list);
}
template <class... Args>
void _Log(std::string_view level, const char* file, std::int32_t line, const char* function,
          std::string_view format, const Args&... arguments) {
    _Log(level, LogOrigin{file, line, function}, format, arguments...);
}

// The same without any stamp.
template <class... Args>
void _SuccinctlyLog(std::string_view /*level*/, const LogOrigin& /*origin*/,
                    std::string_view format, const Args&... arguments) {
    const std::array<NS::FormatArgument, sizeof...(Args)> list{NS::FormatArgument(arguments)...};
    logSuccinctLine(format, list);
}
template <class... Args>
void _SuccinctlyLog(std::string_view level, const char* file, std::int32_t line,
                    const char* function, std::string_view format, const Args&... arguments) {
    _SuccinctlyLog(level, LogOrigin{file, line, function}, format, arguments...);
}

// NOLINTEND(bugprone-reserved-identifier)
