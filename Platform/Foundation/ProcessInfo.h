#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <cstdint>

namespace NS {

// What a process knows of itself. Any thread.
class ProcessInfo final : public Object {
    NS_OBJECT(ProcessInfo)
  public:
    static Ref<ProcessInfo> processInfo();

    // The program's file name, without its folder.
    Ref<String> processName() const;
    std::int32_t processIdentifier() const;
    // Another text at each call, on this machine and any other: letters, digits and "-", at
    // most 80.
    Ref<String> globallyUniqueString() const;
};

// The kernel's number of the calling thread.
std::int32_t currentThreadIdentifier();

} // namespace NS
