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
    // A text that no other call gives, in this process or another, on this machine or another. At
    // most 80 ASCII letters, digits and hyphens.
    Ref<String> globallyUniqueString() const;
};

// The operating system's number of the calling thread.
std::int32_t currentThreadIdentifier() noexcept;

} // namespace NS
