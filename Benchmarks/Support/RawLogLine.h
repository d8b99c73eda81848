#pragma once

#include <string_view>

namespace Benchmarks {

// What a log line costs at the least that is in the file when the call returns, with nothing left
// open: the file is opened, its end looked for, the line written, the file closed. False when any
// of it failed.
bool appendRaw(const char* path, std::string_view line) noexcept;

} // namespace Benchmarks
