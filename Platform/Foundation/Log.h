#pragma once

#include "Platform/Foundation/Format.h"

#include <span>
#include <string_view>

namespace NS {

// Writes one line to the console log, which is standard error here:
//
//     2026-11-16 06:56:27.412 quorvane-host[4711:4711] started ext. server <NSMachPort: 0x…>
//
// Local time, program, process and thread, then the formatted text; see Format.h. Any thread; lines
// of several do not mix.
void logArguments(std::string_view format, std::span<const FormatArgument> arguments);

template <class... Args>
void Log(std::string_view format, const Args&... arguments) {
    const std::array<FormatArgument, sizeof...(Args)> list{FormatArgument(arguments)...};
    logArguments(format, list);
}

} // namespace NS
