#pragma once

namespace Shell {

// Gives the system back what the allocator keeps of memory that is no longer used. Takes some
// milliseconds after a selection of many items.
void returnUnusedMemory() noexcept;

} // namespace Shell
