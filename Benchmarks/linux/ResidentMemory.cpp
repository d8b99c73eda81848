#include "Benchmarks/ResidentMemory.h"

#include "Platform/Foundation/BlockPool.h"

#include <fstream>

#include <malloc.h>
#include <unistd.h>

namespace Benchmarks {

void giveBackMemory() {
    (void)::malloc_trim(0);
    NS::BlockPool::shared().giveBackEmptyRegions();
}

std::size_t residentBytes() {
    giveBackMemory();
    std::ifstream statistics("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statistics >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace Benchmarks
