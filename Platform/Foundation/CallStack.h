#pragma once

#include <span>
#include <string>
#include <vector>

// The call stack of the running thread, as the operating system tells it.
namespace NS::CallStack {

// The return addresses, innermost first, beginning with the given one; with this function's own
// when that is not among them. The outermost frames of a very deep stack are missing.
std::vector<void*> captureFrom(const void* returnAddress);

// "0   module                 0x00005581e0a1b2c3 function + 123" for each return address of a call
// stack. A function of the program itself is known where the program file has its symbol table
// still, one of a library where the library exports it. Of another, the module stands for it, and
// the offset is that into the module.
std::vector<std::string> symbols(std::span<void* const> addresses);

// A function's or type's name as it stands in the source, for its name in a program file; the name
// itself when it is not such a one.
std::string readableName(const char* name);

} // namespace NS::CallStack
