#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

// Something that a run loop waits for: a descriptor, and what to do when it is readable.
class RunLoopSource : public Object {
    NS_OBJECT(RunLoopSource)
  public:
    // The descriptor; the same for as long as the source is in a loop.
    virtual int descriptor() const noexcept = 0;
    // Called on the loop's thread when the descriptor is readable or hung up. Must not block. The
    // loop keeps the source alive meanwhile. What it raises leaves the loop's turn.
    virtual void ready() = 0;
};

} // namespace NS
