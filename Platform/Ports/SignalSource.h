#pragma once

#include "Platform/Ports/RunLoopSource.h"

#include <functional>
#include <initializer_list>
#include <memory>

namespace NS {

// Receives signals in the run loop instead of in a handler. They are blocked for the calling thread
// from here on, so make it before other threads start.
class SignalSource final : public RunLoopSource {
    NS_OBJECT(SignalSource)
  public:
    // Calls back with the number of each signal that arrives.
    SignalSource(std::initializer_list<int> signals, std::function<void(int)> received);
    ~SignalSource() override;

    int descriptor() const noexcept override;
    void ready() override;

  private:
    class System;
    std::unique_ptr<System> system_;
    std::function<void(int)> received_;
};

} // namespace NS
