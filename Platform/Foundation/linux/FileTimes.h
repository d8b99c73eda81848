#pragma once

#include <algorithm>
#include <sys/stat.h>

namespace NS {

// What is asked of the system for the times of an entry.
inline constexpr unsigned kFileTimes = STATX_BTIME | STATX_MTIME | STATX_CTIME;

// In seconds since 1970.
inline double secondsOf(const statx_timestamp& time) noexcept {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Where the file system keeps no birth time, the earlier of modification and change.
inline double creationSecondsOf(const struct statx& status) noexcept {
    return (status.stx_mask & STATX_BTIME) != 0
               ? secondsOf(status.stx_btime)
               : std::min(secondsOf(status.stx_mtime), secondsOf(status.stx_ctime));
}

} // namespace NS
