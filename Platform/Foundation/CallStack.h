#pragma once

#include <cstddef>
#include <string>
#include <vector>

// The call stack of the running thread, as the operating system tells it.
namespace NS::CallStack {

// The return addresses, innermost first, beginning with the given one; with this function's own
// when that is not among them. The outermost frames of a very deep stack are missing.
std::vector<void*> captureFrom(const void* returnAddress);

// "0   module                 0x00005581e0a1b2c3 function + 123" for the return address at an
// index of a call stack.
std::string symbol(std::size_t index, void* address);

// A function's or type's name as it stands in the source, for its name in a program file; the name
// itself when it is not such a one.
std::string readableName(const char* name);

} // namespace NS::CallStack
