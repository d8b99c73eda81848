#pragma once

#include "Platform/Foundation/Object.h"

namespace NS {

// Something that looks around once a run loop has served what was ready.
class RunLoopObserver : public Object {
    NS_OBJECT(RunLoopObserver)
  public:
    // Called on the loop's thread before the loop waits for its sources, and before serveReady()
    // returns to a foreign loop; also where a source turns out to be ready, though seldom while
    // many are. Must not block, and must not run the loop.
    virtual void beforeWaiting() = 0;
};

} // namespace NS
