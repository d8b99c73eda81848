#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Ports/RunLoopObserver.h"
#include "Platform/Ports/RunLoopSource.h"

#include <memory>

namespace NS {

class MachPort;

// A set of sources that are served together. The default mode is the only one that is ever run
// here.
enum class RunLoopMode { kDefault };

// Waits for the sources of one thread and calls them when they have something, on that thread.
//
// Every thread has one, made when it is first asked for. Turns may be nested: a callback may run
// the loop again. Belongs to its thread.
class RunLoop final : public Object {
    NS_OBJECT(RunLoop)
  public:
    static Ref<RunLoop> currentRunLoop();
    ~RunLoop() override;

    // Serves a port's messages, or stops serving them. Adding it twice is adding it once. The loop
    // keeps what it serves alive.
    void addPort_forMode(const Ref<MachPort>& port, RunLoopMode mode);
    void removePort_forMode(const Ref<MachPort>& port, RunLoopMode mode);
    void addSource_forMode(const Ref<RunLoopSource>& source, RunLoopMode mode);
    void removeSource_forMode(const Ref<RunLoopSource>& source, RunLoopMode mode);

    // Adding an observer twice is adding it once.
    void addObserver_forMode(const Ref<RunLoopObserver>& observer, RunLoopMode mode);
    void removeObserver_forMode(const Ref<RunLoopObserver>& observer, RunLoopMode mode);

    // Serves the sources until the date, which may be past: then what is ready now is served once.
    // Returns at the date and not earlier, also when there is nothing to serve.
    void runUntilDate(const Date& date);
    // Serves one source that is ready, or the first that becomes so; false when none is by the
    // date. No clock is read for Date::distantFuture().
    bool runMode_beforeDate(RunLoopMode mode, const Date& date);
    // Serves the sources for ever.
    [[noreturn]] void run();

    // Readable when a source of the default mode is ready: a foreign loop (GLib, Qt) can poll it
    // and call serveReady() then. Owned by the run loop.
    int pollDescriptor() const noexcept;
    // Serves what is ready now and returns without waiting; true when there was anything.
    bool serveReady();

    RunLoop();

  private:
    class System;
    std::unique_ptr<System> system_;
};

} // namespace NS
