#include "Shell/linux/UnusedMemory.h"

#include <malloc.h>

namespace Shell {

void returnUnusedMemory() noexcept {
    (void)::malloc_trim(0); // whether there was any does not matter
}

} // namespace Shell
