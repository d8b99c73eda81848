#include "Benchmarks/HotPaths/HotPaths.h"

#include <valgrind/callgrind.h>

namespace HotPaths {

void count(const char* path, const std::function<void()>& work) {
    work();
    CALLGRIND_TOGGLE_COLLECT;
    work();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(path);
}

} // namespace HotPaths
