#pragma once

#include "Platform/Foundation/Format.h"

#include <array>
#include <span>
#include <string_view>

namespace NS {

void logArguments(std::string_view format, std::span<const FormatArgument> arguments);

// Writes one line to the console log, which is standard error:
//
//     2026-11-16 06:56:27.412 quorvane-host[4711:4712] started ext. server <NSMachPort: 0x…>
//
// Local time, program, process and thread, then the formatted text (see Format.h). A line is
// written in one go, so that those of several threads and processes do not mix; a console that is
// gone or full loses it. Any thread.
template <class... Args>
void Log(std::string_view format, const Args&... arguments) {
    const std::array<FormatArgument, sizeof...(Args)> list{FormatArgument(arguments)...};
    logArguments(format, list);
}

} // namespace NS
