#pragma once

#include <string>
#include <vector>

// The call stack of the running thread, as the operating system tells it.
namespace NS::CallStack {

// The return addresses, innermost first, without the innermost `skipped` ones of the callers.
std::vector<void*> capture(std::size_t skipped);

// "0   module                 0x00005581e0a1b2c3 function + 123" for the address at an index.
std::string symbol(std::size_t index, void* address);

} // namespace NS::CallStack
